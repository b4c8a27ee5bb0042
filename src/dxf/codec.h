// Text encoding of a drawing: UTF-8 from AC1021 on, earlier the code page named by
// $DWGCODEPAGE, with \U+XXXX escapes for characters the code page lacks.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "base/status.h"

namespace dxf {

// Copies share caches, so a codec and its copies are used from one thread at a time.
class Codec {
 public:
  // UTF-8, the encoding of AC1021 and later.
  Codec();
  // The codec for a drawing of version `acadver` ("AC1015") whose $DWGCODEPAGE is
  // `codepage` ("ANSI_1252", "dos932", "MAC-ROMAN"...; empty when the header has none).
  // An unknown code page is an error naming it.
  static base::Result<Codec> forDrawing(std::string_view acadver, std::string_view codepage);

  // Decodes raw value bytes into wide text, resolving \U+XXXX and \M+NXXXX escapes;
  // other backslashes (MTEXT codes, malformed escapes) stay as they are.
  // Returns false iff some bytes are invalid in the encoding (they become U+FFFD).
  bool decode(std::string_view raw, std::wstring& out) const;
  std::wstring decode(std::string_view raw) const;
  // Encodes wide text for the drawing; a character the code page cannot hold, and CR and LF
  // (which would end the value in the file), are written as \U+XXXX; NUL is left out.
  std::string encode(std::wstring_view text) const;

  bool isUtf8() const;
  // The encoding's name as iconv knows it ("UTF-8", "CP1252"...).
  const std::string& name() const;

 private:
  struct Impl;
  explicit Codec(std::shared_ptr<const Impl> impl);
  std::shared_ptr<const Impl> impl_;
};

}  // namespace dxf
