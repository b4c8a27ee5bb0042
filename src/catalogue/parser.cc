#include "catalogue/parser.h"

#include <algorithm>
#include <optional>
#include <unordered_set>

#include "base/crt_numbers.h"
#include "base/text_case.h"
#include "base/utf.h"
#include "catalogue/line_reader.h"
#include "catalogue/macro_table.h"
#include "catalogue/resource_files.h"
#include "catalogue/resource_loader.h"
#include "catalogue/table_builder.h"
#include "draw/object_types.h"

namespace catalogue {

namespace {

using PM = ParseMessage;
using Tokens = std::vector<std::wstring>;

// Name limits count UTF-16 code units.

std::wstring trimName(std::wstring_view text) {
  size_t first = text.find_first_not_of(L" \t");
  if (first == std::wstring_view::npos) return {};
  size_t last = text.find_last_not_of(L" \t\r\n");
  return std::wstring(text.substr(first, last - first + 1));
}

// A class has a name and types, and its first type is not the invalid marker.
bool isValidObject(const ObjectClass& object) {
  const std::vector<std::wstring>& types = object.objectTypes();
  return !object.display_name.empty() && !types.empty() && types.front() != draw::kTypeInvalid;
}

bool isDrawable(const ObjectClass& object) {
  return object.objectTypes().front() != draw::kTypeNotDrawable;
}

// What comparing `table` with a stored definition looks at: the field names and types.
TableDefinition shapeOf(const TableDefinition& table) {
  TableDefinition shape{table.name, {}};
  shape.fields.reserve(table.fields.size());
  for (const FieldDefinition& field : table.fields) {
    FieldDefinition& f = shape.fields.emplace_back();
    f.name = field.name;
    f.type = field.type;
  }
  return shape;
}

class Parser {
 public:
  Parser(ParseEnvironment& environment, const std::wstring& class_file)
      : environment_(environment) {
    catalogue_.class_file = class_file;
    stack_.push_back(&catalogue_.tree);
  }

  ParsedClasses run(std::wstring_view text) {
    result_.ok = readLines(text) && finish();
    if (!result_.ok) catalogue_.clear();
    result_.catalogue = std::make_shared<const Catalogue>(std::move(catalogue_));
    return std::move(result_);
  }

 private:
  Catalogue& catalogue() { return catalogue_; }

  void report(PM message, int line, std::wstring argument = {}) {
    result_.messages.push_back({message, line, std::move(argument)});
  }
  // Reports a fatal error of the current line; always false, so handlers can return it.
  bool fail(PM message, std::wstring argument = {}) {
    report(message, line_, std::move(argument));
    return false;
  }

  bool readLines(std::wstring_view text) {
    LineReader reader(text);
    std::wstring_view line;
    while (reader.next(line)) {
      ++line_;
      Tokens tokens = tokenizeLine(line);
      if (tokens.empty()) continue;
      // Lower-cased once empty tokens are gone, so that a keyword after a blank first column
      // still compares without case.
      tokens.front() = base::lowerCase(tokens.front());
      for (std::wstring& token : tokens) macros_.expand(token);
      if (macros_.exhausted()) return fail(PM::kExpansionTooLong, expansionLimit());
      if (!dispatch(tokens)) return false;
      // Field values are expanded once more while the line is dispatched.
      if (macros_.exhausted()) return fail(PM::kExpansionTooLong, expansionLimit());
    }
    return true;
  }

  static std::wstring expansionLimit() { return std::to_wstring(MacroTable::kMaxAddedCharacters); }

  bool dispatch(const Tokens& t) {
    const std::wstring& keyword = t.front();
    if (keyword == L"class") return onClass(t);
    if (keyword == L"/class") return onEndClass(t);
    if (keyword == L"obj_name") return onObjName(t);
    if (keyword == L"obj_type") return onObjType(t);
    if (keyword == L"obj_prop") return onObjProp(t);
    if (keyword == L"vel_name") return onVelName(t);
    if (keyword == L"vel_key") return onVelKey(t);
    if (keyword == L"vel_fld") return onVelFld(t);
    if (keyword == L"define") return onDefine(t);
    if (keyword == L"variable") return onVariable(t);
    if (keyword == L"autoconst") return onAutoconst(t);
    if (const ResourceKeyword* rule = findResourceKeyword(keyword)) return onResource(*rule, t);
    return fail(PM::kInvalidSyntax, keyword);
  }

  // --- Groups.

  bool onClass(const Tokens& t) {
    if (t.size() != 3 && t.size() != 4) return fail(PM::kInvalidClass);
    if (stack_.size() > kMaxGroupDepth) {
      return fail(PM::kGroupsTooDeep, std::to_wstring(kMaxGroupDepth));
    }
    attachObject();
    Group group;
    group.name = trimName(t[1]);
    // Only a repeated name written in lower case is caught, as files in use rely on.
    if (group_names_.contains(group.name)) return fail(PM::kRedefinition, group.name);
    group_names_.insert(base::lowerCase(group.name));
    group.flag = std::clamp(base::wtoi(t[2]), 0, 1);
    group_flag_ = group.flag;
    if (t.size() == 4) group.text = t[3];
    Group* parent = stack_.back();
    parent->children.push_back(std::move(group));
    stack_.push_back(&parent->children.back());
    return true;
  }

  bool onEndClass(const Tokens& t) {
    if (t.size() != 1) return fail(PM::kInvalidClass);
    // Back to enabled, not to the flag of the group now innermost: files in use rely on it.
    group_flag_ = 1;
    if (stack_.size() == 1) return fail(PM::kInvalidClass);
    attachObject();
    stack_.pop_back();
    return true;
  }

  // Adds the current class to the innermost group, once.
  void attachObject() {
    if (!object_ || object_key_ == last_attached_ || !isValidObject(*object_) ||
        !isDrawable(*object_)) {
      return;
    }
    stack_.back()->members.push_back(object_key_);
    last_attached_ = object_key_;
  }

  // --- Classes.

  bool closeObject() {
    if (!isValidObject(*object_) || !isDrawable(*object_)) return fail(PM::kInvalidObject);
    if (catalogue().objects.contains(object_key_)) {
      return fail(PM::kRedefinition, object_->display_name);
    }
    if (table_ && !closeTable()) return false;
    attachObject();
    catalogue().objects.emplace(object_key_, std::move(*object_));
    object_.reset();
    return true;
  }

  bool onObjName(const Tokens& t) {
    if (object_ && !closeObject()) return false;
    object_.reset();
    table_.reset();
    if (catalogue().objects.size() >= kMaxObjectClasses) {
      return fail(PM::kTooManyClasses, std::to_wstring(kMaxObjectClasses));
    }
    if ((t.size() != 4 && t.size() != 5) || base::utf16Length(t[1]) > kMaxObjectName) {
      return fail(PM::kInvalidObjName);
    }
    ObjectClass object;
    object.display_name = t[1];
    object.enabled = (group_flag_ == 1 ? base::wtoi(t[2]) : 0) != 0;
    object.draw_order = base::wtoi(t[3]);
    if (t.size() == 5) object.icon = t[4];
    object_key_ = base::lowerCase(t[1]);
    object_ = std::move(object);
    return true;
  }

  bool onObjType(const Tokens& t) {
    if (!object_) return fail(PM::kObjNameUndefined);
    if (t.size() != 2) return fail(PM::kInvalidObjType);
    object_->properties.object_types = draw::parseObjectTypes(t[1]);
    if (!isValidObject(*object_)) return fail(PM::kInvalidObjType);
    return true;
  }

  bool onObjProp(const Tokens& t) {
    if (!object_) return fail(PM::kObjNameUndefined);
    const std::vector<std::wstring>& types = object_->objectTypes();
    if (types.empty() || draw::isTypeMarker(types.front())) return fail(PM::kObjTypeUndefined);
    if (t.size() < 3) return true;  // a key without a value is ignored, as files in use expect
    if (t.size() > 4 || !draw::parseObjectProperty(object_->properties, t[1], t[2],
                                                   t.size() == 4 ? t[3] : std::wstring())) {
      report(PM::kWarnInvalidObjProp, line_);
    }
    return true;
  }

  // --- Tables.

  static bool isValidName(const std::wstring& name, size_t max) {
    return base::utf16Length(name) <= max && !hasInvalidNameCharacter(name);
  }

  bool onVelName(const Tokens& t) {
    if (!object_) return fail(PM::kObjNameUndefined);
    if (t.size() != 2 || !isValidName(t[1], kMaxTableName)) return fail(PM::kInvalidVelName);
    if (table_ && !closeTable()) return false;
    table_ = TableDefinition{t[1], {}};
    return true;
  }

  bool onVelKey(const Tokens& t) {
    if (!table_) return fail(PM::kVelNameUndefined);
    if (t.size() != 2 || !isValidName(t[1], kMaxFieldName)) return fail(PM::kInvalidVelKey);
    // A second key is not refused here: it makes the table ill-formed when it closes.
    table_->fields.push_back(makeKeyField(t[1]));
    return true;
  }

  bool onVelFld(const Tokens& t) {
    if (!table_) return fail(PM::kVelNameUndefined);
    if (t.size() < 4 || t.size() > 6 || !isValidName(t[1], kMaxFieldName)) {
      return fail(PM::kInvalidVelFld);
    }
    auto existing = std::find_if(table_->fields.begin(), table_->fields.end(),
                                 [&](const FieldDefinition& f) { return f.name == t[1]; });
    if (existing != table_->fields.end()) return fail(PM::kRedefinitionOfField, existing->name);
    if (table_->fields.size() >= kMaxTableFields) {
      return fail(PM::kTooManyFields, std::to_wstring(kMaxTableFields));
    }
    std::optional<FieldDefinition> field = makeField(t, macros_);
    if (!field) return fail(PM::kInvalidVelFld);
    if (autoconst_ && field->allowed.size() == 1 && field->allowed.front() == field->value) {
      field->flags |= kFieldConst;
    }
    table_->fields.push_back(std::move(*field));
    return true;
  }

  bool closeTable() {
    TableDefinition table = std::move(*table_);
    table_.reset();
    if (!isWellFormed(table)) {
      report(PM::kWarnTableIllFormed, line_, table.name);
    } else {
      // Whether the table agrees with a drawing's stored one is known only when binding;
      // a mismatch there ends the report here.
      result_.table_checks.push_back({shapeOf(table), line_, result_.messages.size()});
    }
    if (collected_.add(table) == TableCollection::Result::kConflict) {
      return fail(PM::kConflictingTables, table.name);
    }
    object_->tables.push_back(std::move(table));
    return true;
  }

  // --- Macros, variables, switches.

  bool onDefine(const Tokens& t) {
    if (t.size() != 3) return fail(PM::kInvalidDefinition);
    std::wstring name = base::lowerCase(t[1]);
    // Reported but defined all the same, as files in use expect.
    if (name == L"obj_name" || hasInvalidNameCharacter(name)) {
      report(PM::kInvalidDefinition, line_);
    }
    switch (macros_.define(name, t[2])) {
      case MacroTable::DefineResult::kRecursive:
        report(PM::kWarnRecursiveDefinition, line_);
        break;
      case MacroTable::DefineResult::kRedefined:
        report(PM::kWarnRedefinition, line_, t[1]);
        break;
      case MacroTable::DefineResult::kDefined:
        break;
    }
    return true;
  }

  bool onVariable(const Tokens& t) {
    if (t.size() != 3) return fail(PM::kInvalidVariable);
    auto current = environment_.getVar(base::toUtf8(t[1]));
    if (!current) {
      report(PM::kWarnInvalidVariable, line_, t[1]);
      return true;
    }
    std::optional<SysVarSetting> setting = makeSetting(t[1], settingKindOf(*current), t[2]);
    if (!setting) return fail(PM::kInvalidVariable);
    (object_ ? object_->settings : catalogue().global_settings).push_back(std::move(*setting));
    return true;
  }

  bool onAutoconst(const Tokens& t) {
    if (t.size() != 2) return fail(PM::kInvalidSyntax, t.front());
    autoconst_ = base::wtoi(t[1]) > 0;
    return true;
  }

  // --- Resource files.

  bool onResource(const ResourceKeyword& rule, const Tokens& t) {
    if (t.size() != 2) return fail(rule.invalid);
    std::wstring pattern = resolveResourcePath(t[1], catalogue().class_file);
    std::vector<std::wstring> files = findFiles(pattern);
    if (files.empty()) {
      report(PM::kInvalidPath, 0, pattern);
      return false;
    }
    for (const std::wstring& file : files) {
      if (rule.shape_fonts && hasExtension(file, L".shx")) {
        if (!addToSupportPath(environment_, file)) {
          // The file goes on being read for its messages, but nothing of it is kept.
          report(PM::kUnableToLoad, 0, file);
          failed_ = true;
          return true;
        }
        continue;
      }
      bool accepted = std::any_of(rule.extensions.begin(), rule.extensions.end(),
                                  [&](std::wstring_view ext) { return hasExtension(file, ext); });
      if (!accepted) continue;
      std::wstring key = base::lowerCase(file);
      if (rule.block_files) {
        catalogue().block_files.try_emplace(key, BlockFile{file, blockNameOf(file)});
      } else if (rule.kind != 0) {
        DependencyFile& dependency = dependencies_[key];
        if (dependency.path.empty()) dependency.path = file;
        dependency.mask |= rule.kind;
      }
    }
    return true;
  }

  // --- End of file.

  bool finish() {
    if (failed_) return false;
    if (stack_.size() > 1) {
      report(PM::kUnclosedClass, 0);
      return false;
    }
    if (object_ && !closeObject()) return false;
    planResources(catalogue(), dependencies_);
    buildTableIndex();
    return true;
  }

  void buildTableIndex() {
    for (const auto& [key, object] : catalogue().objects) {
      for (const TableDefinition& table : object.tables) {
        auto entry = catalogue().tables.try_emplace(base::lowerCase(table.name)).first;
        std::vector<std::wstring>& users = entry->second.objects;
        if (std::find(users.begin(), users.end(), key) == users.end()) users.push_back(key);
      }
    }
  }

  ParseEnvironment& environment_;
  Catalogue catalogue_;
  ParsedClasses result_;
  MacroTable macros_;
  TableCollection collected_;
  DependencyTable dependencies_;
  // The open groups, the root first. Only the innermost gets children, so the pointers
  // into its ancestors' child lists stay valid.
  std::vector<Group*> stack_;
  // Every group's name lower-cased, the root's empty one included: searching the tree for
  // each new group would take time growing with the square of a file's groups.
  std::unordered_set<std::wstring> group_names_{L""};
  std::optional<ObjectClass> object_;
  std::wstring object_key_;
  std::optional<TableDefinition> table_;
  std::wstring last_attached_;
  int group_flag_ = 1;
  bool autoconst_ = false;
  // A shape font could not be made known: the result will be empty.
  bool failed_ = false;
  int line_ = 0;
};

}  // namespace

base::Result<host::SysVar> HostEnvironment::getVar(std::string_view name) const {
  return host_.database().getVar(name);
}

std::optional<std::wstring> HostEnvironment::getEnv(std::wstring_view name) const {
  return host_.getEnv(name);
}

bool HostEnvironment::setEnv(std::wstring_view name, std::wstring_view value) {
  return host_.setEnv(name, value);
}

ParsedClasses parseClassDefinitions(std::string_view utf8, const std::wstring& path,
                                    ParseEnvironment& environment) {
  std::wstring text = decodeClassFile(utf8);
  return Parser(environment, path).run(text);
}

ParsedClasses readClassDefinitions(const std::wstring& path, ParseEnvironment& environment) {
  base::Result<std::string> bytes = readFileBytes(path, kMaxClassFileBytes);
  if (!bytes) {
    Catalogue empty;
    empty.class_file = path;
    ParsedClasses result;
    result.catalogue = std::make_shared<const Catalogue>(std::move(empty));
    if (bytes.status().code() == base::Code::kInvalid) {
      result.messages.push_back({PM::kFileTooLarge, 0, path});
    }
    return result;
  }
  return parseClassDefinitions(*bytes, path, environment);
}

}  // namespace catalogue
