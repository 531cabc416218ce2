// SPDX-License-Identifier: Apache-2.0
#ifndef IPL_EXAMPLES_WORDCOUNT_TEXTCOUNTER_H
#define IPL_EXAMPLES_WORDCOUNT_TEXTCOUNTER_H

#include <ipl/PLArray.h>
#include <ipl/PLString.h>

#include "WordCount/WordTable.h"
#include "pipeline/Pipeline.h"

namespace pipeline {

/// Counts the lines, words and characters of a text that comes in pieces; a piece may end within a word.
class TextCounter {
 public:
  /// words: takes every word, with its capitals folded.
  explicit TextCounter(WordTable* words) : m_pWords(words), m_counts() {}

  /// Counts a piece. Returns false if memory is exhausted: then a word is missing or incomplete.
  bool Add(const PLString& piece);
  /// Ends the text, and with it the word that it ends with. Returns its counts; the next text starts from zero.
  /// complete: set to false if memory is exhausted.
  TextCounts EndText(bool& complete);

 private:
  bool EndWord();

  WordTable* const m_pWords;
  PLArray<unsigned short> m_word;  // the word that is being read
  TextCounts m_counts;
};

}  // namespace pipeline

#endif  // IPL_EXAMPLES_WORDCOUNT_TEXTCOUNTER_H
