// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_EXAMPLES_PIPELINE_ARGUMENTS_H
#define IPL_EXAMPLES_PIPELINE_ARGUMENTS_H

#include <ipl/IPLKernel.h>

namespace pipeline {

/// The words of the command line behind "--", one after the other. One that begins with "-" is an option; a second "--"
/// ends the options, and "-" alone is none. The words belong to the host and stay valid.
class Arguments {
 public:
  explicit Arguments(IPLKernel* kernel);

  /// Goes to the next word, at first to the first one. Returns false if there is none.
  bool Next();
  const char* GetWord() const { return m_pWord; }
  bool IsOption() const { return m_bOption; }
  /// Returns whether the word is this option, whose name begins with "-".
  bool IsOption(const char* name) const;
  /// Takes the word behind an option as its value. Null if there is none.
  const char* TakeValue();

 private:
  bool Step();

  IPLKernel* const m_pKernel;
  int m_index = 0;
  const char* m_pWord = nullptr;
  bool m_bOption = false;
  bool m_bOptionsEnded = false;
};

}  // namespace pipeline

#endif  // IPL_EXAMPLES_PIPELINE_ARGUMENTS_H
