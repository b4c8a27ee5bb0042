// The messages of the class-file parser. The parser only says which message and with what;
// the command layer turns them into the texts of the program's string table, which lists
// the parser's texts in this same order.
#pragma once

#include <string>

namespace catalogue {

enum class ParseMessage : int {
  kInvalidBlockReference,  // fatal, like every message up to kInvalidDefinition
  kInvalidBlockReferenceFile,
  kInvalidClass,
  kRedefinition,
  kInvalidLayout,
  kInvalidLayer,
  kInvalidLinetype,
  kInvalidMline,
  kInvalidMleader,
  kInvalidDimension,
  kInvalidFont,
  kInvalidPattern,
  kInvalidTextStyle,
  kInvalidVariable,
  kInvalidObject,
  kInvalidObjName,
  kObjNameUndefined,
  kObjTypeUndefined,
  kInvalidObjType,
  kInvalidVelName,
  kVelNameUndefined,
  kInvalidVelFld,
  kInvalidVelKey,
  kRedefinitionOfField,
  kTableMismatch,
  kConflictingTables,
  kInvalidSyntax,
  kInvalidDefinition,  // fatal for a wrong token count, only reported for a bad macro name
  kWarnTableIllFormed,
  kWarnInvalidObjProp,
  kWarnInvalidVariable,
  kWarnRedefinition,
  kWarnRecursiveDefinition,
  // End-of-file messages, without a line number.
  kUnclosedClass,
  kInvalidPath,
  kUnableToLoad,
  kBlockNotFound,
  kDimensionStyleNotFound,
  kLayerNotFound,
  kLinetypeNotFound,
  kMleaderStyleNotFound,
  kMlineStyleNotFound,
  kPatternNotFound,
  kTextStyleNotFound,
  // Limits on files that would take unbounded memory or stack; all fatal.
  kFileTooLarge,      // without a line number; the argument is the path
  kGroupsTooDeep,     // the argument is the deepest nesting allowed
  kTooManyClasses,    // the argument is how many object classes a file may declare
  kTooManyFields,     // the argument is how many fields a table may have
  kExpansionTooLong,  // the argument is how many characters macros may add to a file
};

inline constexpr int kParseMessageCount = static_cast<int>(ParseMessage::kExpansionTooLong) + 1;

// One message: its line number (0 for the messages that have none) and the text that its
// "%s" shows, when it has one.
struct Diagnostic {
  ParseMessage message;
  int line = 0;
  std::wstring argument;
  bool operator==(const Diagnostic&) const = default;
};

}  // namespace catalogue
