#include "shell/string_table.h"

#include <cwchar>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include "base/utf.h"

namespace shell {
namespace {

// Which commands use which identifiers:
//
// 100-103  guard and lookup errors of the command layer: "no file loaded" in every command
//          that needs a catalogue (all but TAXOR_LOAD, TAXOR_RELOAD, TAXOR_GUI,
//          TAXOR_PROPERTIES, TAXOR_ABOUT, TAXOR_TEMPLATE and TAXOR_TYPE); "object not found"
//          and "unable to load object dependencies" in TAXOR_CLASSIFY and TAXOR_RESTORE;
//          "no objects selected" in the commands that build a candidate set.
// 104-106  message-box captions (TAXOR_TEMPLATE and TAXOR_DRAW show "Error").
// 107-110  result reports: "Selected" by TAXOR_SEL, TAXOR_SEL_CLASS, TAXOR_SEL_EXT,
//          TAXOR_SEL_ALL, TAXOR_SEL_CLASSIFIED, TAXOR_SEL_NULL, TAXOR_ASSERT and
//          TAXOR_SEL_DUPLICATES; "Completed: %i" by TAXOR_CLASSIFY, TAXOR_REMOVE,
//          TAXOR_REMOVE_ALL and TAXOR_DEL_DUPLICATES; "Completed: %i/%i" by
//          TAXOR_CLASSIFY_AUTO, TAXOR_RESTORE and TAXOR_TEMPLATE; "Completed" by TAXOR_ROUND.
// 111      the class-name prompt of TAXOR_CLASSIFY, TAXOR_REMOVE, TAXOR_RESTORE, TAXOR_SEL,
//          TAXOR_SEL_CLASS, TAXOR_SEL_EXT, TAXOR_DRAW and TAXOR_IMPL_INSRT, TAXOR_IMPL_TXT,
//          TAXOR_IMPL_MTXT.
// 112-155  the class-definition parser, run by TAXOR_LOAD and TAXOR_RELOAD: errors and
//          warnings that start with the line number, then the end-of-file checks.
// 156      writing the recent and favorites lists (TAXOR_RELOAD, unloading the module).
// 157-158  applying a class: TAXOR_CLASSIFY, TAXOR_CLASSIFY_AUTO, TAXOR_RESTORE, TAXOR_DRAW.
// 159-160  the prompts of TAXOR_CLASSIFY_AUTO.
// 161      the prompt of TAXOR_ASSERT and TAXOR_SEL_NULL.
// 162-165  the report of TAXOR_STAT.
// 166      the mode prompt of TAXOR_RESTORE.
// 167-169  the switches of TAXOR_SEL_ALL and TAXOR_SEL_EXT; the match switch also of
//          TAXOR_SEL_CLASSIFIED.
// 170-172  the report of TAXOR_SEL_DUPLICATES: head, one class name, end.
// 173      the mode prompt of TAXOR_DEL_DUPLICATES.
// 174-176  TAXOR_TEMPLATE: name format prompt and its error, the file that cannot be
//          written (a message-box text, shown with its placeholder unfilled).
// 177      one line of TAXOR_TYPE.
// 178-180  TAXOR_DRAW: the prompt for an open property (the key), a refused value, and the
//          message box for a table stored with another definition.
// 181-183  TAXOR_IMPL_INSRT, TAXOR_IMPL_TXT and TAXOR_IMPL_MTXT: point and text prompts.
// 184-190  the dialogs of TAXOR_CLASSIFY: classification parameters with its check boxes,
//          and the list of classes to remove.
// 191      the title of the TAXOR_STAT report box.
// 192      the file-dialog filter of TAXOR_LOAD and TAXOR_TEMPLATE.
// 193-194  the product name and version that TAXOR_ABOUT shows.
// 195-196  TAXOR_CLASSIFY, TAXOR_CLASSIFY_AUTO: a default or value that its field's type
//          cannot hold; a drawing whose format has no place for object data.
constexpr const wchar_t* kBuiltInTexts[] = {
    L"Error: no file loaded.\n",
    L"Error: object not found.\n",
    L"Error: unable to load object dependencies.\n",
    L"Error: no objects selected.\n",
    L"Error",
    L"Warning",
    L"TAXOR message",
    L"Selected: %i",
    L"Completed: %i\n",
    L"Completed: %i/%i\n",
    L"Completed\n",
    L"Object: ",
    L"%i: error: invalid 'blockreference' definition\n",
    L"%i: error: invalid 'blockreferencefile' definition\n",
    L"%i: error: invalid 'class' definition\n",
    L"%i: error: redefinition of '%s'\n",
    L"%i: error: invalid 'layout' definition\n",
    L"%i: error: invalid 'layer' definition\n",
    L"%i: error: invalid 'linetype' definition\n",
    L"%i: error: invalid 'mline' definition\n",
    L"%i: error: invalid 'mleader' definition\n",
    L"%i: error: invalid 'dimension' definition\n",
    L"%i: error: invalid 'font' definition\n",
    L"%i: error: invalid 'pattern' definition\n",
    L"%i: error: invalid 'textstyle' definition\n",
    L"%i: error: invalid 'variable' definition\n",
    L"%i: error: invalid object definition\n",
    L"%i: error: invalid 'obj_name' definition\n",
    L"%i: error: 'obj_name' undefined\n",
    L"%i: error: 'obj_type' undefined\n",
    L"%i: error: invalid 'obj_type' definition\n",
    L"%i: error: invalid 'vel_name' definition\n",
    L"%i: error: 'vel_name' undefined\n",
    L"%i: error: invalid 'vel_fld' definition\n",
    L"%i: error: invalid 'vel_key' definition\n",
    L"%i: error: redefinition of vel_fld '%s'\n",
    L"%i: error: table '%s' does not match existing definition\n",
    L"%i: error: conflicting definitions for table '%s'\n",
    L"%i: error: invalid syntax: '%s'\n",
    L"%i: error: invalid definition\n",
    L"%i: warning: table '%s' ill-formed\n",
    L"%i: warning: invalid 'obj_prop' definition\n",
    L"%i: warning: invalid variable '%s'\n",
    L"%i: warning: redefinition of '%s'\n",
    L"%i: warning: recursive definition\n",
    L"error: invalid class definition\n",
    L"error: invalid path: '%s'\n",
    L"error: unable to load '%s'\n",
    L"warning: block '%s' not found\n",
    L"warning: dimension '%s' not found\n",
    L"warning: layer '%s' not found\n",
    L"warning: linetype '%s' not found\n",
    L"warning: mleader '%s' not found\n",
    L"warning: mline '%s' not found\n",
    L"warning: pattern '%s' not found\n",
    L"warning: textstyle '%s' not found\n",
    L"warning: unable to open '%s'\n",
    L"error: '%s' undefined\n",
    L"error: unable to load dependecies for object '%s'\n",
    L"Mode [0 (properties)/1 (classes)]<%i>: ",
    L"Undrawable [0/1]<%i>: ",
    L"Check non-required fields [0/1]<%i>: ",
    L"Objects: %i (%i unclassified)\n",
    L"Classes: %i\n",
    L"\t%s: %i (%i invalid)",
    L"Invalid definitions: %i\n",
    L"Mode [0 (all)/1 (default)]<%i>: ",
    L"Use properties? [0/1]<%i>: ",
    L"Use objects? [0/1]<%i>: ",
    L"Match [0/1]<1>: ",
    L"Selected: %i (",
    L"'%s' ",
    L")\n",
    L"Mode (First, Last)<First>: ",
    L"Format<%s>: ",
    L"Error: invalid format (%%T/%%t, %%i are required).\n",
    L"Error: unable to open '%s'.\n",
    L"%s\n",
    L"%s: ",
    L"error: invalid value\n",
    L"Error: table '%s' does not match existing definition.",
    L"Point:\n",
    L"Text:\n",
    L"Text<%s>:\n",
    L"Classification parameters",
    L"Assign graphical properties",
    L"Attach OD",
    L"Change object",
    L"Define field OD",
    L"Remove",
    L"Select All",
    L"TAXOR_STAT",
    L"Text files (*.txt)|*.txt||",
    // TAXOR_ABOUT.
    L"TAXOR - classification of drawing entities",
    L"Version %s\n",
    // The classifying commands.
    L"Error: the value '%s' does not fit field '%s' of table '%s' (class '%s'); correct the "
    L"class file. The command stopped; records written before it stay.\n",
    L"Error: this drawing cannot keep object data; save it as DXF R2000 or later and run the "
    L"command again.\n",
    L"Error: %s stopped: %s. What it changed before stays; the drawing can be saved and the "
    L"next command run.\n",
    // Class files refused for their size.
    L"error: '%s' is larger than 16 MB, far more than a class file holds; check that it is "
    L"the right file\n",
    L"%i: error: groups nested more than %s deep; close each group with '/class'\n",
    L"%i: error: more than %s object classes; no class file holds so many, check that it is "
    L"the right file\n",
    L"%i: error: more than %s fields in one table; split the table\n",
    L"%i: error: macros expand to more than %s characters; check the 'define' lines whose "
    L"values use other macros\n",
};
static_assert(std::size(kBuiltInTexts) == kStringCount, "one built-in text per identifier");

constexpr int kMaxWidthOrPrecision = 1000;

// One parsed printf directive starting at a '%'.
struct Directive {
  std::size_t end = 0;   // one past its last character
  bool percent = false;  // "%%"
  bool star = false;     // width or precision given as '*'
  std::wstring flags, width, precision;
  std::wstring length;
  wchar_t conversion = 0;
  char kind = '?';
};

bool isDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

// Reads digits or a '*' at `pos`; false when the number is too large.
bool readCount(std::wstring_view text, std::size_t& pos, std::wstring& out, bool& star) {
  if (pos < text.size() && text[pos] == L'*') {
    star = true;
    out = L"*";
    ++pos;
    return true;
  }
  while (pos < text.size() && isDigit(text[pos])) out += text[pos++];
  return out.size() < 5 && (out.empty() || std::stoi(out) <= kMaxWidthOrPrecision);
}

Directive parseDirective(std::wstring_view text, std::size_t start) {
  Directive d;
  std::size_t pos = start + 1;
  d.end = pos;
  if (pos < text.size() && text[pos] == L'%') {
    d.percent = true;
    d.end = pos + 1;
    return d;
  }
  while (pos < text.size() &&
         std::wstring_view(L"-+ #0").find(text[pos]) != std::wstring_view::npos) {
    d.flags += text[pos++];
  }
  if (!readCount(text, pos, d.width, d.star)) return d;
  if (pos < text.size() && text[pos] == L'.') {
    ++pos;
    d.precision = L".";
    std::wstring digits;
    if (!readCount(text, pos, digits, d.star)) return d;
    d.precision += digits;
  }
  for (std::wstring_view length :
       {L"hh", L"ll", L"I64", L"I32", L"h", L"l", L"L", L"j", L"z", L"t", L"w", L"q", L"I"}) {
    if (text.substr(pos, length.size()) == length) {
      d.length = length;
      pos += length.size();
      break;
    }
  }
  if (pos >= text.size()) return d;
  d.conversion = text[pos];
  d.end = pos + 1;
  const bool narrowInt = d.length.empty() || d.length == L"h" || d.length == L"hh";
  auto among = [&](std::wstring_view set) {
    return set.find(d.conversion) != std::wstring_view::npos;
  };
  if (among(L"diouxX")) {
    d.kind = narrowInt ? 'i' : 'L';
  } else if (among(L"fFeEgGaA")) {
    d.kind = d.length == L"L" ? 'F' : 'f';
  } else if (among(L"sS")) {
    d.kind = d.conversion == L'S' || d.length == L"h" ? 'n' : 's';
  } else if (among(L"cC")) {
    d.kind = 'c';
  } else if (d.conversion == L'p') {
    d.kind = 'p';
  }
  return d;
}

// The directives of `text` as written, separated by blanks, for error messages.
std::string directiveSpelling(std::wstring_view text) {
  std::string out;
  for (std::size_t i = text.find(L'%'); i != std::wstring_view::npos; i = text.find(L'%', i)) {
    Directive d = parseDirective(text, i);
    if (!d.percent) {
      if (!out.empty()) out += ' ';
      for (std::size_t k = i; k < d.end; ++k) out += text[k] < 0x80 ? char(text[k]) : '?';
    }
    i = d.end;
  }
  return out.empty() ? "none" : out;
}

// Runs swprintf on one directive and one value, growing the buffer as needed.
template <typename T>
std::wstring printOne(const std::wstring& pattern, T value) {
  std::wstring buffer(2 * kMaxWidthOrPrecision + 400, L'\0');
  for (;;) {
    int n = std::swprintf(buffer.data(), buffer.size(), pattern.c_str(), value);
    if (n >= 0) return buffer.substr(0, n);
    if (buffer.size() > (1u << 20)) return pattern;
    buffer.resize(buffer.size() * 2);
  }
}

// Widths and precisions count UTF-16 code units, as a wide printf does where wchar_t is
// UTF-16; a precision never splits a character.
std::wstring padText(const Directive& d, std::wstring text) {
  if (d.precision.size() > 1) {
    text.resize(base::utf16Prefix(text, std::stoul(d.precision.substr(1))));
  }
  if (d.precision == L".") text.clear();
  std::size_t width = d.width.empty() ? 0 : std::stoul(d.width);
  std::size_t length = base::utf16Length(text);
  if (length >= width) return text;
  std::wstring pad(width - length, L' ');
  return d.flags.find(L'-') != std::wstring::npos ? text + pad : pad + text;
}

// Formats one argument by `d`; nullopt when the argument is of another kind.
std::optional<std::wstring> formatArg(const Directive& d, const FormatArg& arg) {
  const std::wstring base = L"%" + d.flags + d.width + d.precision;
  switch (d.kind) {
    case 'i':
    case 'L':
      if (arg.kind() != FormatArg::Kind::kInteger) return std::nullopt;
      return printOne(base + d.conversion, arg.integer());
    case 'c':
      if (arg.kind() != FormatArg::Kind::kInteger) return std::nullopt;
      return printOne(base + L"lc", static_cast<wint_t>(arg.integer()));
    case 'f':
    case 'F':
      if (arg.kind() == FormatArg::Kind::kInteger) {
        return printOne(base + d.conversion, static_cast<double>(arg.integer()));
      }
      if (arg.kind() != FormatArg::Kind::kReal) return std::nullopt;
      return printOne(base + d.conversion, arg.real());
    case 's':
    case 'n':
      if (arg.kind() != FormatArg::Kind::kText) return std::nullopt;
      return padText(d, arg.text());
    default:
      return std::nullopt;
  }
}

// Decodes well-formed UTF-8 into wide characters (surrogate pairs where wchar_t is 16 bits).
bool decodeUtf8(std::string_view in, std::wstring& out) {
  for (std::size_t i = 0; i < in.size();) {
    const unsigned char lead = static_cast<unsigned char>(in[i]);
    const int extra = lead < 0x80                   ? 0
                      : lead >= 0xC2 && lead < 0xE0 ? 1
                      : lead >= 0xE0 && lead < 0xF0 ? 2
                      : lead >= 0xF0 && lead < 0xF5 ? 3
                                                    : -1;
    if (extra < 0 || i + extra >= in.size()) return false;
    char32_t cp = extra == 0 ? lead : lead & (0x3F >> extra);
    for (int k = 1; k <= extra; ++k) {
      const unsigned char c = static_cast<unsigned char>(in[i + k]);
      if ((c & 0xC0) != 0x80) return false;
      cp = (cp << 6) | (c & 0x3F);
    }
    if ((extra == 2 && cp < 0x800) || (extra == 3 && (cp < 0x10000 || cp > 0x10FFFF)) ||
        (cp >= 0xD800 && cp <= 0xDFFF)) {
      return false;
    }
    if (sizeof(wchar_t) == 2 && cp >= 0x10000) {
      out += static_cast<wchar_t>(0xD800 + ((cp - 0x10000) >> 10));
      out += static_cast<wchar_t>(0xDC00 + ((cp - 0x10000) & 0x3FF));
    } else {
      out += static_cast<wchar_t>(cp);
    }
    i += extra + 1;
  }
  return true;
}

// Replaces \n, \t and \\; false (with `what` set) on any other escape.
bool unescape(std::string_view in, std::string& out, std::string& what) {
  for (std::size_t i = 0; i < in.size(); ++i) {
    if (in[i] != '\\') {
      out += in[i];
      continue;
    }
    if (++i == in.size()) {
      what = "backslash at the end of the text";
      return false;
    }
    switch (in[i]) {
      case 'n':
        out += '\n';
        break;
      case 't':
        out += '\t';
        break;
      case '\\':
        out += '\\';
        break;
      default:
        what = std::string("unknown escape '\\") + in[i] + "'";
        return false;
    }
  }
  return true;
}

}  // namespace

namespace string_table_internal {

std::string directiveKinds(std::wstring_view text) {
  std::string kinds;
  for (std::size_t i = text.find(L'%'); i != std::wstring_view::npos; i = text.find(L'%', i)) {
    Directive d = parseDirective(text, i);
    if (!d.percent) {
      for (wchar_t c : d.width + d.precision) {
        if (c == L'*') kinds += 'i';
      }
      kinds += d.kind;
    }
    i = d.end;
  }
  return kinds;
}

std::wstring applyFormat(std::wstring_view format, std::span<const FormatArg> args) {
  std::wstring out;
  auto next = args.begin();
  std::size_t copied = 0;
  for (std::size_t i = format.find(L'%'); i != std::wstring_view::npos; i = format.find(L'%', i)) {
    out.append(format.substr(copied, i - copied));
    Directive d = parseDirective(format, i);
    const std::wstring_view written = format.substr(i, d.end - i);
    std::optional<std::wstring> text;
    if (d.percent) {
      text = L"%";
    } else if (d.kind != '?' && !d.star && next != args.end()) {
      text = formatArg(d, *next++);
    }
    out.append(text ? std::wstring_view(*text) : written);
    i = copied = d.end;
  }
  out.append(format.substr(copied));
  return out;
}

}  // namespace string_table_internal

StringTable::StringTable() : texts_(std::begin(kBuiltInTexts), std::end(kBuiltInTexts)) {}

const StringTable& StringTable::builtIn() {
  static const StringTable* const table = new StringTable();
  return *table;
}

const std::wstring& StringTable::get(StringId id) const {
  static const std::wstring* const empty = new std::wstring();
  const int index = static_cast<int>(id) - kFirstStringId;
  if (index < 0 || index >= kStringCount) return *empty;
  return texts_[index];
}

bool StringTable::loadFile(const std::string& path, std::string* error) {
  std::ifstream in(std::filesystem::path(std::u8string(path.begin(), path.end())),
                   std::ios::binary);
  if (!in) {
    if (error) *error = path + ": cannot open the file";
    return false;
  }
  std::string contents((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  return loadText(contents, path, error);
}

bool StringTable::loadText(std::string_view utf8, const std::string& source, std::string* error) {
  std::vector<std::wstring> texts = StringTable().texts_;
  std::vector<int> definedOn(kStringCount, 0);
  if (utf8.substr(0, 3) == "\xEF\xBB\xBF") utf8.remove_prefix(3);
  int lineNumber = 0;
  auto fail = [&](const std::string& what) {
    if (error) *error = source + ":" + std::to_string(lineNumber) + ": " + what;
    return false;
  };
  while (!utf8.empty()) {
    ++lineNumber;
    const std::size_t newline = utf8.find('\n');
    std::string_view line = utf8.substr(0, newline);
    utf8.remove_prefix(newline == std::string_view::npos ? utf8.size() : newline + 1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.find_first_not_of(" \t") == std::string_view::npos || line[0] == '#') continue;

    const std::size_t tab = line.find('\t');
    if (tab == std::string_view::npos) return fail("no TAB between identifier and text");
    const std::string_view idText = line.substr(0, tab);
    if (idText.empty() || idText.size() > 9 ||
        idText.find_first_not_of("0123456789") != std::string_view::npos) {
      return fail("malformed identifier '" + std::string(idText) + "'");
    }
    const int id = std::stoi(std::string(idText));
    const int index = id - kFirstStringId;
    if (index < 0 || index >= kStringCount) return fail("unknown identifier " + std::to_string(id));
    if (definedOn[index] != 0) {
      return fail("identifier " + std::to_string(id) + " already given on line " +
                  std::to_string(definedOn[index]));
    }
    std::string bytes, what;
    if (!unescape(line.substr(tab + 1), bytes, what)) return fail(what);
    std::wstring text;
    if (!decodeUtf8(bytes, text)) return fail("text is not valid UTF-8");
    if (text.empty()) return fail("empty text for identifier " + std::to_string(id));
    const std::wstring_view original = kBuiltInTexts[index];
    if (string_table_internal::directiveKinds(text) !=
        string_table_internal::directiveKinds(original)) {
      return fail("identifier " + std::to_string(id) + " has the directives '" +
                  directiveSpelling(text) + "' where the built-in text has '" +
                  directiveSpelling(original) + "'");
    }
    texts[index] = std::move(text);
    definedOn[index] = lineNumber;
  }
  texts_ = std::move(texts);
  return true;
}

std::wstring StringTable::format(StringId id, std::initializer_list<FormatArg> args) const {
  return string_table_internal::applyFormat(get(id), {args.begin(), args.size()});
}

}  // namespace shell
