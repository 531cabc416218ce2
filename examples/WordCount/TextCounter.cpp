// SPDX-License-Identifier: Apache-2.0
#include "WordCount/TextCounter.h"

#include "WordCount/Letters.h"

namespace pipeline {

bool TextCounter::Add(const PLString& piece) {
  bool complete = true;
  const unsigned short* units = piece.GetBuffer();
  for (unsigned long i = 0; i < piece.GetLength(); ++i) {
    const unsigned short unit = units[i];
    if (unit == '\n') {
      ++m_counts.lines;
    }
    if (unit < 0xDC00 || unit > 0xDFFF) {  // the second half of a character is not counted
      ++m_counts.characters;
    }
    if (IsWordUnit(unit)) {
      const unsigned long length = m_word.GetSize();
      m_word.Append(FoldCase(unit));
      complete = m_word.GetSize() > length && complete;
    } else {
      complete = EndWord() && complete;
    }
  }
  return complete;
}

TextCounts TextCounter::EndText(bool& complete) {
  complete = EndWord() && complete;
  const TextCounts counts = m_counts;
  m_counts = TextCounts();
  return counts;
}

bool TextCounter::EndWord() {
  if (m_word.GetSize() == 0) {
    return true;
  }
  ++m_counts.words;
  const bool added = m_pWords->Add(&m_word[0], m_word.GetSize());
  m_word.SetSize(0);
  return added;
}

}  // namespace pipeline
