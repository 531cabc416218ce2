// SPDX-License-Identifier: Apache-2.0
#include "pipeline/Arguments.h"

namespace pipeline {

Arguments::Arguments(IPLKernel* kernel) : m_pKernel(kernel) {
  while (Step() && m_pKernel->strcmp(m_pWord, "--") != 0) {
  }
}

bool Arguments::Step() {
  while (++m_index < m_pKernel->GetArgc()) {
    m_pWord = m_pKernel->GetArgv()[m_index];
    if (m_pWord != nullptr) {
      return true;
    }
  }
  m_pWord = nullptr;
  return false;
}

bool Arguments::Next() {
  if (!Step()) {
    return false;
  }
  if (!m_bOptionsEnded && m_pKernel->strcmp(m_pWord, "--") == 0) {
    m_bOptionsEnded = true;
    return Next();
  }
  m_bOption = !m_bOptionsEnded && m_pWord[0] == '-' && m_pWord[1] != '\0';
  return true;
}

bool Arguments::IsOption(const char* name) const { return m_bOption && m_pKernel->strcmp(m_pWord, name) == 0; }

const char* Arguments::TakeValue() { return Step() ? m_pWord : nullptr; }

}  // namespace pipeline
