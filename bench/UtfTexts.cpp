// SPDX-License-Identifier: Apache-2.0
#include "UtfTexts.h"

#include <codecvt>
#include <locale>

namespace {

constexpr size_t kLength = 4096;

UtfText Make(const char* name, const std::string& sample, size_t length) {
  std::string text;
  while (text.size() + sample.size() <= length) {
    text += sample;
  }
  std::wstring_convert<std::codecvt_utf8_utf16<char16_t>, char16_t> convert;
  return {name, text, convert.from_bytes(text)};
}

}  // namespace

const std::vector<UtfText>& GetUtfTexts() {
  static const std::vector<UtfText> texts = {
      Make("Ascii", "The quick brown fox jumps over the lazy dog, twice. ", kLength),
      Make("Latin", "Zwölf Boxkämpfer jagen Viktor quer über den großen Sylter Deich. Déjà vu, à bientôt! ", kLength),
      Make("Cjk", "日本語の文章は漢字と仮名を交ぜて書く。春眠暁を覚えず処々啼鳥を聞く。", kLength),
      Make("Emoji", "😀😁😂🤣😃😄😅😆😉😊", kLength),
      Make("Mixed", "aéb漢c😀dïe語", kLength),
      Make("Path40", "/usr/share/applications/television/guide", 40),
      Make("1MiB", "The quick brown fox jumps over the lazy dog, twice. ", size_t{1} << 20),
  };
  return texts;
}
