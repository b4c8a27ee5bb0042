// The table of every prompt, message and caption that TAXOR shows, loaded by identifier so
// that a translation can replace the texts without touching the code.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace shell {

// Identifiers of the texts, contiguous from 100. The comment block in string_table.cc says
// which commands use each range.
enum class StringId : int {
  // Shared by the command layer.
  kErrorNoFileLoaded = 100,
  kErrorObjectNotFound,
  kErrorUnableToLoadObjectDependencies,
  kErrorNoObjectsSelected,
  kCaptionError,
  kCaptionWarning,
  kCaptionMessage,
  kSelectedCount,
  kCompletedCount,
  kCompletedRatio,
  kCompleted,
  kPromptObject,
  // Class-definition parser (line-numbered and end-of-file messages).
  kParseInvalidBlockReference,
  kParseInvalidBlockReferenceFile,
  kParseInvalidClass,
  kParseRedefinition,
  kParseInvalidLayout,
  kParseInvalidLayer,
  kParseInvalidLinetype,
  kParseInvalidMline,
  kParseInvalidMleader,
  kParseInvalidDimension,
  kParseInvalidFont,
  kParseInvalidPattern,
  kParseInvalidTextStyle,
  kParseInvalidVariable,
  kParseInvalidObject,
  kParseInvalidObjName,
  kParseObjNameUndefined,
  kParseObjTypeUndefined,
  kParseInvalidObjType,
  kParseInvalidVelName,
  kParseVelNameUndefined,
  kParseInvalidVelFld,
  kParseInvalidVelKey,
  kParseRedefinitionOfField,
  kParseTableMismatch,
  kParseConflictingTables,
  kParseInvalidSyntax,
  kParseInvalidDefinition,
  kParseWarnTableIllFormed,
  kParseWarnInvalidObjProp,
  kParseWarnInvalidVariable,
  kParseWarnRedefinition,
  kParseWarnRecursiveDefinition,
  kParseUnclosedClass,
  kParseInvalidPath,
  kParseUnableToLoad,
  kParseBlockNotFound,
  kParseDimensionStyleNotFound,
  kParseLayerNotFound,
  kParseLinetypeNotFound,
  kParseMleaderStyleNotFound,
  kParseMlineStyleNotFound,
  kParsePatternNotFound,
  kParseTextStyleNotFound,
  // Recent and favorites lists.
  kWarnUnableToOpenList,
  // Classification, validation, statistics, remove and restore.
  kErrorClassUndefined,
  kErrorUnableToLoadClassDependencies,
  kPromptAutoClassifyMode,
  kPromptUndrawable,
  kPromptCheckNonRequired,
  kStatObjects,
  kStatClasses,
  kStatClassLine,
  kStatInvalidDefinitions,
  kPromptRestoreMode,
  // Selection and drawing maintenance.
  kPromptUseProperties,
  kPromptUseObjects,
  kPromptMatch,
  kDuplicatesSelected,
  kDuplicatesClassName,
  kDuplicatesEnd,
  kPromptDuplicatesMode,
  kPromptNameFormat,
  kErrorInvalidNameFormat,
  kErrorUnableToOpenFile,
  kTypeReportLine,
  // Drawing of classified objects.
  kPromptPropertyValue,
  kErrorInvalidValue,
  kErrorTableMismatch,
  kPromptPoint,
  kPromptText,
  kPromptTextWithDefault,
  // User interface: dialog captions, labels and file filters.
  kClassifyDialogTitle,
  kClassifyAssignProperties,
  kClassifyAttachRecords,
  kClassifyReplaceClasses,
  kClassifyDefineFieldRecords,
  kRemoveDialogTitle,
  kRemoveSelectAll,
  kStatDialogTitle,
  kTextFileFilter,
  // TAXOR_ABOUT.
  kAboutProduct,
  kAboutVersion,
  // A value that its field cannot hold ended a classifying command.
  kErrorConversion,
  // The drawing cannot keep records (no dictionaries in its format).
  kErrorNoObjectData,
  // A command ended by a fault it did not handle itself.
  kErrorCommandFailed,
  // Class files refused for their size, after the parser's other messages.
  kParseFileTooLarge,
  kParseGroupsTooDeep,
  kParseTooManyClasses,
  kParseTooManyFields,
  kParseExpansionTooLong,
};

inline constexpr int kFirstStringId = 100;
inline constexpr int kStringCount =
    static_cast<int>(StringId::kParseExpansionTooLong) - kFirstStringId + 1;

// One argument of StringTable::format: an integer, a real or a wide text.
class FormatArg {
 public:
  enum class Kind { kInteger, kReal, kText };

  FormatArg(int value) : kind_(Kind::kInteger), integer_(value) {}  // NOLINT: implicit by design
  FormatArg(double value) : kind_(Kind::kReal), real_(value) {}     // NOLINT: implicit by design
  FormatArg(std::wstring value)                                     // NOLINT: implicit by design
      : kind_(Kind::kText), text_(std::move(value)) {}
  FormatArg(const wchar_t* value) : FormatArg(std::wstring(value)) {}  // NOLINT: implicit

  Kind kind() const { return kind_; }
  int integer() const { return integer_; }
  double real() const { return real_; }
  const std::wstring& text() const { return text_; }

 private:
  Kind kind_;
  int integer_ = 0;
  double real_ = 0.0;
  std::wstring text_;
};

class StringTable {
 public:
  // A table holding the built-in English texts.
  StringTable();

  // The English texts compiled into the program.
  static const StringTable& builtIn();

  // The text of `id`; an empty text for a value outside the identifier range.
  const std::wstring& get(StringId id) const;

  // Number of texts, the same for every table.
  static constexpr std::size_t size() { return kStringCount; }

  // Replaces texts from a translation file: UTF-8, one entry per line "ID<TAB>text", the
  // escapes \n, \t and \\ in the text, lines starting with '#' and blank lines ignored.
  // An entry must use printf directives of the same kinds, in the same order, as the
  // built-in text. Ids the file does not name get the built-in text. On failure the table is
  // left as it was and `error` (when not null) says "path:line: what is wrong".
  bool loadFile(const std::string& path, std::string* error);
  // The same for the contents of such a file; `source` names it in errors.
  bool loadText(std::string_view utf8, const std::string& source, std::string* error);

  // The text of `id` with its printf directives (%i, %d, %s, %ls, %lf, %.2lf, %%, with
  // flags and widths) replaced by `args` in order. An integer directive takes an integer, a
  // real directive a real or an integer, a text directive a text. A directive without an
  // argument or with an argument of another kind is left as written (a mismatched argument
  // is still used up); a directive using '*' is left as written and uses no argument;
  // surplus arguments are ignored.
  std::wstring format(StringId id, std::initializer_list<FormatArg> args) const;

 private:
  std::vector<std::wstring> texts_;
};

namespace string_table_internal {

// What a printf directive consumes: 'i' integer, 'f' real, 's' wide text, 'n' narrow text,
// 'L' wider integer, 'F' long double, 'c' character, 'p' pointer; a '*' adds an 'i' before
// its directive. "%%" consumes nothing. A malformed directive (unknown conversion, "%n", a
// width or precision above 1000, a '%' at the end) gives '?'.
std::string directiveKinds(std::wstring_view text);

// The directive engine behind StringTable::format, exposed for tests.
std::wstring applyFormat(std::wstring_view format, std::span<const FormatArg> args);

}  // namespace string_table_internal

}  // namespace shell
