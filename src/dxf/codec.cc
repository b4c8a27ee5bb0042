#include "dxf/codec.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <utility>
#include <vector>

#include "base/utf.h"

namespace dxf {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

// $DWGCODEPAGE values, normalised by normalizeName(), and the iconv names to try in order.
struct CodePage {
  std::string_view dxf;
  std::string_view iconv;
  std::string_view fallback;
};

constexpr CodePage kCodePages[] = {
    {"ANSI874", "CP874", "WINDOWS-874"},
    {"ANSI932", "CP932", "IBM943"},
    {"ANSI936", "CP936", "GBK"},
    {"ANSI949", "CP949", "UHC"},
    {"ANSI950", "CP950", "BIG5"},
    {"ANSI1250", "CP1250", ""},
    {"ANSI1251", "CP1251", ""},
    {"ANSI1252", "CP1252", ""},
    {"ANSI1253", "CP1253", ""},
    {"ANSI1254", "CP1254", ""},
    {"ANSI1255", "CP1255", ""},
    {"ANSI1256", "CP1256", ""},
    {"ANSI1257", "CP1257", ""},
    {"ANSI1258", "CP1258", ""},
    {"ANSI1361", "CP1361", "JOHAB"},
    {"DOS437", "CP437", ""},
    {"DOS850", "CP850", ""},
    {"DOS852", "CP852", ""},
    {"DOS855", "CP855", ""},
    {"DOS857", "CP857", ""},
    {"DOS860", "CP860", ""},
    {"DOS861", "CP861", ""},
    {"DOS863", "CP863", ""},
    {"DOS864", "CP864", ""},
    {"DOS865", "CP865", ""},
    {"DOS866", "CP866", ""},
    {"DOS869", "CP869", ""},
    {"DOS932", "CP932", "IBM943"},
    {"MACROMAN", "MACINTOSH", ""},
    {"MACINTOSH", "MACINTOSH", ""},
    {"BIG5", "CP950", "BIG5"},
    {"GB2312", "CP936", "GBK"},
    {"KSC5601", "CP949", "UHC"},
    {"JOHAB", "CP1361", "JOHAB"},
    {"ISO88591", "ISO-8859-1", ""},
    {"ISO88592", "ISO-8859-2", ""},
    {"ISO88593", "ISO-8859-3", ""},
    {"ISO88594", "ISO-8859-4", ""},
    {"ISO88595", "ISO-8859-5", ""},
    {"ISO88596", "ISO-8859-6", ""},
    {"ISO88597", "ISO-8859-7", ""},
    {"ISO88598", "ISO-8859-8", ""},
    {"ISO88599", "ISO-8859-9", ""},
    // Files labelled ascii routinely carry Windows bytes; 1252 reads them and all of ASCII.
    {"ASCII", "CP1252", ""},
};

// The code pages \M+N escapes name, by N - 1.
constexpr std::array<std::string_view, 5> kEscapePages = {"CP932", "CP950", "CP949", "CP1361",
                                                          "CP936"};

// Writers disagree on case and separators ("ANSI_1252", "dos932", "MAC-ROMAN").
std::string normalizeName(std::string_view name) {
  std::string out;
  for (char c : name) {
    if (c == '_' || c == '-' || c == ' ' || c == '\t' || c == '\r') continue;
    out.push_back(c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c);
  }
  return out;
}

void appendEscape(char32_t unit, std::string& out) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  out += "\\U+";
  for (int shift = 12; shift >= 0; shift -= 4) out.push_back(kHex[(unit >> shift) & 0xF]);
}

// CR and LF end a value of an ASCII file, NUL one of a binary file: written as they are, they
// would cut the value and make the rest of it read as the next tags.
bool endsValue(char32_t c) { return c == U'\r' || c == U'\n' || c == U'\0'; }

// CR and LF are written as escapes; NUL, which no text of a drawing holds (its escape is
// refused when read, as it would cut C strings short), is left out.
void appendValueEnd(char32_t c, std::string& out) {
  if (c != U'\0') appendEscape(c, out);
}

// Writes `cp` as one escape, or two surrogate escapes above the BMP.
void appendCodePointEscape(char32_t cp, std::string& out) {
  if (cp >= 0x10000) {
    cp -= 0x10000;
    appendEscape(0xD800 + (cp >> 10), out);
    appendEscape(0xDC00 + (cp & 0x3FF), out);
  } else {
    appendEscape(cp, out);
  }
}

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Parses exactly four hex digits at the front of `s`; -1 if they are not there.
int32_t hex4(std::string_view s) {
  if (s.size() < 4) return -1;
  int32_t v = 0;
  for (int k = 0; k < 4; ++k) {
    int d = hexValue(s[k]);
    if (d < 0) return -1;
    v = (v << 4) | d;
  }
  return v;
}

// Owns one iconv descriptor.
class Converter {
 public:
  Converter() = default;
  Converter(const char* to, const char* from) : cd_(iconv_open(to, from)) {}
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;
  Converter(Converter&& other) noexcept : cd_(std::exchange(other.cd_, kNone)) {}
  Converter& operator=(Converter&& other) noexcept {
    std::swap(cd_, other.cd_);
    return *this;
  }
  ~Converter() {
    if (isOpen()) iconv_close(cd_);
  }

  bool isOpen() const { return cd_ != kNone; }
  iconv_t get() const { return cd_; }

 private:
  static inline const iconv_t kNone = reinterpret_cast<iconv_t>(-1);
  iconv_t cd_ = kNone;
};

char32_t readUtf32Le(const char* p) {
  auto b = [p](int k) { return static_cast<char32_t>(static_cast<unsigned char>(p[k])); };
  return b(0) | (b(1) << 8) | (b(2) << 16) | (b(3) << 24);
}

void appendUtf32Le(const char* begin, const char* end, std::wstring& out) {
  for (const char* p = begin; p + 4 <= end; p += 4) base::appendWide(readUtf32Le(p), out);
}

void pushUtf32Le(char32_t cp, std::string& out) {
  for (int k = 0; k < 4; ++k) out.push_back(static_cast<char>((cp >> (8 * k)) & 0xFF));
}

// Converts `in` to UTF-32LE with `cd` and appends it to `out`. Each byte that does not
// convert becomes U+FFFD; returns false iff there were any.
bool decodeWith(iconv_t cd, std::string_view in, std::wstring& out, std::string& buf) {
  bool clean = true;
  buf.resize(in.size() * 4 + 16);
  char* inp = const_cast<char*>(in.data());  // iconv's prototype lacks const
  size_t in_left = in.size();
  iconv(cd, nullptr, nullptr, nullptr, nullptr);
  while (true) {
    char* outp = buf.data();
    size_t out_left = buf.size();
    size_t r = iconv(cd, &inp, &in_left, &outp, &out_left);
    int err = errno;
    appendUtf32Le(buf.data(), outp, out);
    if (r != static_cast<size_t>(-1)) break;
    if (err == E2BIG) continue;
    // EILSEQ or a truncated character at the end.
    out.push_back(static_cast<wchar_t>(kReplacement));
    clean = false;
    ++inp;
    --in_left;
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
  }
  // Stateful converters (CP1258 composes) may hold back a last character.
  char* outp = buf.data();
  size_t out_left = buf.size();
  iconv(cd, nullptr, nullptr, &outp, &out_left);
  appendUtf32Le(buf.data(), outp, out);
  return clean;
}

}  // namespace

struct Codec::Impl {
  enum class Kind { kUtf8, kSingleByte, kMultiByte };

  Kind kind = Kind::kUtf8;
  std::string name = "UTF-8";

  // Single-byte pages: byte -> code point (U+FFFD where undefined), and back through
  // 256-code-point pages (byte 0 = not representable, as only U+0000 maps to it).
  std::array<char32_t, 256> to_wide{};
  std::array<int16_t, 256> page_of_high_byte{};
  std::vector<std::array<uint8_t, 256>> pages;

  // Multibyte pages: which bytes start a two-byte character, and the converters.
  std::array<bool, 256> lead{};
  Converter decoder;  // code page -> UTF-32LE
  Converter encoder;  // UTF-32LE -> code page

  // The two converters keep iconv's conversion state, so a codec, like the drawing it
  // belongs to, is used from one thread at a time; it keeps no other state between calls.

  // Sets the tables up for iconv encoding `iconv_name`; false if iconv lacks it.
  bool init(std::string_view iconv_name);

  void decodeText(std::string_view bytes, std::wstring& out, bool& clean) const;
  // Parses the escape at the front of `s` (which starts with a backslash) and appends its
  // text; returns its length, or 0 when it is not a well-formed escape.
  size_t decodeEscape(std::string_view s, std::wstring& out, bool& clean) const;
  void encodeMultiByte(std::string_view utf32, std::string& out) const;
};

bool Codec::Impl::init(std::string_view iconv_name) {
  std::string code(iconv_name);
  decoder = Converter("UTF-32LE", code.c_str());
  encoder = Converter(code.c_str(), "UTF-32LE");
  if (!decoder.isOpen() || !encoder.isOpen()) return false;
  name = code;

  // Probe each high byte alone: a lone lead byte is incomplete, which tells the two kinds
  // apart without a list.
  bool multibyte = false;
  std::array<char, 64> out_buf;
  for (int b = 0; b < 256; ++b) {
    to_wide[b] = b < 0x80 ? static_cast<char32_t>(b) : kReplacement;
    if (b < 0x80) continue;
    char in = static_cast<char>(b);
    char* inp = &in;
    size_t in_left = 1;
    char* outp = out_buf.data();
    size_t out_left = out_buf.size();
    iconv(decoder.get(), nullptr, nullptr, nullptr, nullptr);
    size_t r = iconv(decoder.get(), &inp, &in_left, &outp, &out_left);
    if (r == static_cast<size_t>(-1)) {
      if (errno == EINVAL) lead[b] = multibyte = true;
      continue;
    }
    iconv(decoder.get(), nullptr, nullptr, &outp, &out_left);
    if (outp - out_buf.data() != 4) continue;  // not exactly one character
    to_wide[b] = readUtf32Le(out_buf.data());
  }
  iconv(decoder.get(), nullptr, nullptr, nullptr, nullptr);
  if (multibyte) {
    kind = Kind::kMultiByte;
    return true;
  }

  kind = Kind::kSingleByte;
  page_of_high_byte.fill(-1);
  for (int b = 0x80; b < 256; ++b) {
    char32_t cp = to_wide[b];
    if (cp == kReplacement || cp < 0x80 || cp > 0xFFFF) continue;
    int16_t& page = page_of_high_byte[cp >> 8];
    if (page < 0) {
      page = static_cast<int16_t>(pages.size());
      pages.push_back({});
    }
    uint8_t& slot = pages[page][cp & 0xFF];
    if (slot == 0) slot = static_cast<uint8_t>(b);
  }
  return true;
}

void Codec::Impl::decodeText(std::string_view bytes, std::wstring& out, bool& clean) const {
  switch (kind) {
    case Kind::kUtf8: {
      std::wstring part;
      clean &= base::utf8ToWide(bytes, part);
      out += part;
      return;
    }
    case Kind::kSingleByte:
      for (char c : bytes) {
        char32_t cp = to_wide[static_cast<unsigned char>(c)];
        if (cp == kReplacement) clean = false;
        base::appendWide(cp, out);
      }
      return;
    case Kind::kMultiByte: {
      // ASCII goes straight through so that 0x5C stays a backslash even in JOHAB, where
      // iconv reads it as a won sign; only runs of non-ASCII characters go to iconv.
      size_t i = 0;
      while (i < bytes.size()) {
        unsigned char c = static_cast<unsigned char>(bytes[i]);
        if (c < 0x80) {
          out.push_back(static_cast<wchar_t>(c));
          ++i;
          continue;
        }
        size_t start = i;
        while (i < bytes.size() && static_cast<unsigned char>(bytes[i]) >= 0x80) {
          i += lead[static_cast<unsigned char>(bytes[i])] ? 2 : 1;
        }
        i = std::min(i, bytes.size());
        std::string buf;
        clean &= decodeWith(decoder.get(), bytes.substr(start, i - start), out, buf);
      }
      return;
    }
  }
}

size_t Codec::Impl::decodeEscape(std::string_view s, std::wstring& out, bool& clean) const {
  if (s.size() >= 7 && s[1] == 'U' && s[2] == '+') {
    int32_t unit = hex4(s.substr(3));
    // U+0000 would cut C strings short; a lone surrogate is no character.
    if (unit <= 0 || (unit >= 0xDC00 && unit <= 0xDFFF)) return 0;
    if (unit < 0xD800 || unit > 0xDBFF) {
      base::appendWide(static_cast<char32_t>(unit), out);
      return 7;
    }
    if (s.size() >= 14 && s.substr(7, 3) == "\\U+") {
      int32_t low = hex4(s.substr(10));
      if (low >= 0xDC00 && low <= 0xDFFF) {
        base::appendWide(0x10000 + ((static_cast<char32_t>(unit) - 0xD800) << 10) +
                             (static_cast<char32_t>(low) - 0xDC00),
                         out);
        return 14;
      }
    }
    return 0;
  }
  if (s.size() >= 8 && s[1] == 'M' && s[2] == '+' && s[3] >= '1' && s[3] <= '5') {
    int32_t code = hex4(s.substr(4));
    if (code < 0x8000) return 0;  // not a double-byte character
    // Such escapes are rare: their converter is opened for each.
    Converter cd("UTF-32LE", std::string(kEscapePages[s[3] - '1']).c_str());
    if (!cd.isOpen()) return 0;
    const char pair[2] = {static_cast<char>(code >> 8), static_cast<char>(code & 0xFF)};
    std::wstring text;
    std::string buf;
    if (!decodeWith(cd.get(), std::string_view(pair, 2), text, buf) || text.size() != 1) {
      out.push_back(static_cast<wchar_t>(kReplacement));
      clean = false;
    } else {
      out += text;
    }
    return 8;
  }
  return 0;
}

void Codec::Impl::encodeMultiByte(std::string_view utf32, std::string& out) const {
  iconv_t cd = encoder.get();
  iconv(cd, nullptr, nullptr, nullptr, nullptr);
  std::string buf(utf32.size() + 16, '\0');
  char* inp = const_cast<char*>(utf32.data());  // iconv's prototype lacks const
  size_t in_left = utf32.size();
  while (true) {
    char* outp = buf.data();
    size_t out_left = buf.size();
    size_t r = iconv(cd, &inp, &in_left, &outp, &out_left);
    int err = errno;
    out.append(buf.data(), outp);
    if (r != static_cast<size_t>(-1) || in_left < 4) break;
    if (err == E2BIG) continue;
    appendCodePointEscape(readUtf32Le(inp), out);
    inp += 4;
    in_left -= 4;
    iconv(cd, nullptr, nullptr, nullptr, nullptr);
  }
  char* outp = buf.data();
  size_t out_left = buf.size();
  iconv(cd, nullptr, nullptr, &outp, &out_left);
  out.append(buf.data(), outp);
}

Codec::Codec() : impl_(std::make_shared<Impl>()) {}
Codec::Codec(std::shared_ptr<const Impl> impl) : impl_(std::move(impl)) {}

base::Result<Codec> Codec::forDrawing(std::string_view acadver, std::string_view codepage) {
  if (acadver >= "AC1021") return Codec();
  std::string key = normalizeName(codepage);
  if (key.empty()) key = "ANSI1252";  // the default when the header names none
  if (key == "UTF8" || key == "ANSI65001") return Codec();
  for (const CodePage& page : kCodePages) {
    if (page.dxf != key) continue;
    auto impl = std::make_shared<Impl>();
    if (impl->init(page.iconv) || (!page.fallback.empty() && impl->init(page.fallback))) {
      return Codec(std::move(impl));
    }
    return base::Status::invalid("code page '" + std::string(codepage) +
                                 "' is not supported: the system lacks " + std::string(page.iconv));
  }
  return base::Status::invalid("code page '" + std::string(codepage) + "' is not supported");
}

bool Codec::decode(std::string_view raw, std::wstring& out) const {
  // Most values are plain ASCII: copy while checking, and start over only if they are not.
  out.resize(raw.size());
  size_t first = 0;
  for (; first < raw.size(); ++first) {
    unsigned char c = static_cast<unsigned char>(raw[first]);
    if (c >= 0x80 || c == '\\') break;
    out[first] = static_cast<wchar_t>(c);
  }
  if (first == raw.size()) return true;
  out.clear();
  const Impl& impl = *impl_;
  if (impl.kind == Impl::Kind::kUtf8 && raw.find('\\', first) == std::string_view::npos) {
    return base::utf8ToWide(raw, out);
  }

  out.reserve(raw.size());
  bool clean = true;
  size_t text_start = 0;
  size_t i = first;
  while (i < raw.size()) {
    unsigned char c = static_cast<unsigned char>(raw[i]);
    if (c == '\\') {
      std::wstring escaped;
      size_t len = impl.decodeEscape(raw.substr(i), escaped, clean);
      if (len == 0) {
        ++i;
        continue;
      }
      impl.decodeText(raw.substr(text_start, i - text_start), out, clean);
      out += escaped;
      i += len;
      text_start = i;
    } else if (impl.kind == Impl::Kind::kMultiByte && impl.lead[c]) {
      i += 2;  // the trail byte may be 0x5C and is no backslash
    } else {
      ++i;
    }
  }
  if (text_start < raw.size()) impl.decodeText(raw.substr(text_start), out, clean);
  return clean;
}

std::wstring Codec::decode(std::string_view raw) const {
  std::wstring out;
  decode(raw, out);
  return out;
}

std::string Codec::encode(std::wstring_view text) const {
  size_t i = 0;
  while (i < text.size() && static_cast<char32_t>(text[i]) < 0x80 &&
         !endsValue(static_cast<char32_t>(text[i]))) {
    ++i;
  }
  std::string out(i, '\0');
  for (size_t k = 0; k < i; ++k) out[k] = static_cast<char>(text[k]);
  if (i == text.size()) return out;
  const Impl& impl = *impl_;
  if (impl.kind == Impl::Kind::kUtf8) {
    out = base::toUtf8(text);
    if (out.find_first_of(std::string_view("\r\n\0", 3)) == std::string::npos) return out;
    std::string escaped;
    escaped.reserve(out.size() + 16);
    for (char c : out) {
      if (endsValue(static_cast<unsigned char>(c))) {
        appendValueEnd(static_cast<unsigned char>(c), escaped);
      } else {
        escaped.push_back(c);
      }
    }
    return escaped;
  }
  out.reserve(text.size() + 8);

  std::string run;  // UTF-32LE of the pending non-ASCII run (multibyte only)
  while (i < text.size()) {
    char32_t cp = static_cast<char32_t>(text[i++]);
    if (cp < 0x80) {
      if (!run.empty()) {
        impl.encodeMultiByte(run, out);
        run.clear();
      }
      if (endsValue(cp)) {
        appendValueEnd(cp, out);
      } else {
        out.push_back(static_cast<char>(cp));
      }
      continue;
    }
    if constexpr (sizeof(wchar_t) == 2) {
      if (cp >= 0xD800 && cp <= 0xDBFF && i < text.size()) {
        char32_t low = static_cast<char32_t>(text[i]);
        if (low >= 0xDC00 && low <= 0xDFFF) {
          cp = 0x10000 + ((cp - 0xD800) << 10) + (low - 0xDC00);
          ++i;
        }
      }
    }
    if ((cp >= 0xD800 && cp <= 0xDFFF) || cp > 0x10FFFF) cp = kReplacement;
    if (impl.kind == Impl::Kind::kMultiByte) {
      pushUtf32Le(cp, run);
      continue;
    }
    uint8_t byte = 0;
    if (cp <= 0xFFFF) {
      int16_t page = impl.page_of_high_byte[cp >> 8];
      if (page >= 0) byte = impl.pages[page][cp & 0xFF];
    }
    if (byte != 0) {
      out.push_back(static_cast<char>(byte));
    } else {
      appendCodePointEscape(cp, out);
    }
  }
  if (!run.empty()) impl.encodeMultiByte(run, out);
  return out;
}

bool Codec::isUtf8() const { return impl_->kind == Impl::Kind::kUtf8; }
const std::string& Codec::name() const { return impl_->name; }

}  // namespace dxf
