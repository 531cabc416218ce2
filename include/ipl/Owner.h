// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_OWNER_H
#define IPL_OWNER_H

#include <type_traits>

#include <ipl/PLExport.h>

/// @file
/// The base of the owners of the optional layer.

/// The optional layer for C++11 and later: everything in namespace ipl. It is made of the public operations alone, adds
/// nothing to the contract, works without exceptions and without type information, and leaves no symbol in a module.
namespace ipl {

/// Owns one object and gives it back when it ends. It is as large as a pointer, can be moved and not copied; its
/// members mean what those of std::unique_ptr mean. Giver tells what is owned and how that is given back:
///
///   struct Giver {
///     typedef ... Object;
///     static void GiveBack(Object* object);   // object is not null
///   };
///
/// It is made of what a creating operation returned; null makes an empty one. Unlike std::unique_ptr it is always
/// inlined. What giving back needs, blocks for and locks is what the operation that Giver calls does.
/// [owner] Takes no lock of its own and stores no error.
template <typename Giver>
class Owner {
 public:
  /// The class of what is owned.
  typedef typename Giver::Object Object;

  /// An empty owner.
  IPL_ALWAYS_INLINE Owner() noexcept : m_pObject(nullptr) {}
  /// Takes an object over; null is accepted.
  IPL_ALWAYS_INLINE explicit Owner(Object* object) noexcept : m_pObject(object) {}
  /// Takes over what other owns, which becomes empty.
  IPL_ALWAYS_INLINE Owner(Owner&& other) noexcept : m_pObject(other.release()) {}
  /// Gives back what this owns, then takes over what other owns, which becomes empty. Assigning to itself does nothing.
  IPL_ALWAYS_INLINE Owner& operator=(Owner&& other) noexcept {
    if (this != &other) {
      reset(other.release());
    }
    return *this;
  }
  Owner(const Owner&) = delete;
  Owner& operator=(const Owner&) = delete;
  /// Gives the object back, if there is one.
  IPL_ALWAYS_INLINE ~Owner() { reset(); }

  /// Returns the object, null if there is none. It stays owned.
  IPL_ALWAYS_INLINE Object* get() const noexcept { return m_pObject; }
  /// Gives up the ownership. Returns the object, null if there is none; the caller gives it back from now on.
  IPL_ALWAYS_INLINE Object* release() noexcept {
    Object* const object = m_pObject;
    m_pObject = nullptr;
    return object;
  }
  /// Gives the object back, if there is one, and owns another one, or none. object: not the one that is owned.
  IPL_ALWAYS_INLINE void reset(Object* object = nullptr) noexcept {
    Object* const old = m_pObject;
    m_pObject = object;
    if (old != nullptr) {
      Giver::GiveBack(old);
    }
  }
  /// Returns whether there is an object.
  IPL_ALWAYS_INLINE explicit operator bool() const noexcept { return m_pObject != nullptr; }
  /// Requires an object.
  IPL_ALWAYS_INLINE typename std::add_lvalue_reference<Object>::type operator*() const noexcept { return *m_pObject; }
  /// Requires an object.
  IPL_ALWAYS_INLINE Object* operator->() const noexcept { return m_pObject; }

 private:
  Object* m_pObject;  // owned
};

}  // namespace ipl

#endif  // IPL_OWNER_H
