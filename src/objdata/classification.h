// Classes of entities as their records tell them: which class a record names, whether an
// entity carries a class (and carries it validly), attaching and taking off a class's
// records. One Classifier serves one command run over many entities: it remembers what it
// looked up once.
#pragma once

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "catalogue/catalogue.h"
#include "draw/property_application.h"
#include "objdata/record_cursor.h"
#include "objdata/record_validation.h"
#include "objdata/value_template.h"

namespace objdata {

// Thrown when a record is filled with a default its field cannot hold.
struct ConversionFailure {
  int code = 0;  // kConversionFailed or kNotAPoint
  std::wstring class_name;
  std::wstring table;
  std::wstring field;
  std::wstring value;  // the default, expanded
};

// A rule of a class that an entity's records break.
struct Finding {
  const catalogue::ObjectClass* cls = nullptr;
  std::wstring table;
  FieldFinding broken;
};

class Classifier {
 public:
  // Everything given must outlive the classifier.
  // `provided`, when given, is what binding the catalogue to this drawing brought in.
  Classifier(host::Database& database, const catalogue::Catalogue& catalogue,
             TableDirectory& tables, const TemplateEnvironment& environment,
             const catalogue::DrawingResources* provided = nullptr)
      : database_(database),
        catalogue_(catalogue),
        provided_(provided),
        tables_(tables),
        environment_(environment) {}

  const catalogue::Catalogue& catalogue() const { return catalogue_; }
  TableDirectory& tables() { return tables_; }

  // Every record of `entity`, in walk order. The records live in the classifier, reused
  // from one entity to the next, and stay valid until the next call of records or
  // removeClass.
  std::span<const TableRecord> records(host::ObjectId entity);

  // The class that the record's key fields name (their values, lower-cased, looked up among
  // the classes, first found wins); null when the catalogue does not know the table or no
  // key value names a class.
  const catalogue::ObjectClass* classOfRecord(const TableRecord& record);

  // Whether `records` hold, for every table of `cls`, a record of that table whose key field
  // names `cls`; with `validate`, one that also keeps the rules of the table's fields (with
  // `required_only`, of its required fields only). No records: false; a class without
  // tables: true.
  // With `findings`, what makes the answer false is appended there: per table of the class
  // that no record keeps, kNoRecord when no record of it names the class, else the rules
  // the first record naming the class breaks.
  bool isClassifiedAs(std::span<const TableRecord> records, const catalogue::ObjectClass& cls,
                      bool validate = false, bool required_only = false,
                      std::vector<Finding>* findings = nullptr);

  // Appends to `classes` each class a key field of `records` names, once: besides the
  // classes without tables, the only ones the records can carry.
  void classesNamed(std::span<const TableRecord> records,
                    std::vector<const catalogue::ObjectClass*>& classes);

  // The rules that `records` break, checked against each class they name (each class once,
  // in the order the records name them). Empty when the records keep every rule.
  void findBrokenRules(std::span<const TableRecord> records, bool required_only,
                       std::vector<Finding>& findings);

  // Attaches one record of `table` made of the fields' defaults, storing the table's
  // definition first when the drawing lacks it. False when the definition could not be
  // stored. Throws ConversionFailure for a default its field cannot hold; nothing is
  // attached then. The defaults are expanded once per run: records attached by one run
  // carry the same date and time.
  bool classifyWithTable(const catalogue::TableDefinition& table, const catalogue::ObjectClass& cls,
                         host::ObjectId entity);

  enum class Applied { kYes, kFailed, kResourcesMissing };
  // Gives `entity` the class: its drawing properties (when `properties`, in `mode`) and one
  // record per table (when `records`). Nothing is done when the resources the class names
  // cannot be loaded into the drawing; kFailed when a property could not be applied or a
  // table could not be stored.
  Applied applyClass(const catalogue::ObjectClass& cls, host::ObjectId entity, bool properties,
                     bool records, draw::ApplyMode mode);

  // loadClassDependencies, once per class and run.
  bool loadDependencies(const catalogue::ObjectClass& cls);

  // Takes the class named `name` off `entity`: per table of the class, the first record
  // whose key field names the class. False when the catalogue has no such class or the
  // entity does not carry it.
  bool removeClass(std::wstring_view name, host::ObjectId entity);

  // The value a record of `table` holds in its key field for `cls`, and that field's name;
  // empty names when the table has no key field.
  struct Key {
    std::wstring field;
    std::wstring value;
  };
  Key keyOf(const catalogue::TableDefinition& table, const catalogue::ObjectClass& cls);

  std::wstring expand(std::wstring_view text, const catalogue::ObjectClass& cls) const;

 private:
  // A class's tables with their keys and field rules, expanded once per run.
  struct TableRules {
    const catalogue::TableDefinition* table = nullptr;
    Key key;
    std::vector<FieldRules> fields;
  };
  const std::vector<TableRules>& rulesOf(const catalogue::ObjectClass& cls);
  // The record classifyWithTable attaches, made once per table and class: the defaults'
  // variables take their values when the run first needs them.
  struct NewRecord {
    const StoredTable* stored = nullptr;  // null: the table could not be stored
    host::ResBufChain values;
  };
  const NewRecord& newRecordOf(const catalogue::TableDefinition& table,
                               const catalogue::ObjectClass& cls);
  const std::vector<std::wstring>& keyFieldsOf(std::wstring_view table_name);
  const catalogue::ObjectClass* classNamed(const Value& value);

  host::Database& database_;
  const catalogue::Catalogue& catalogue_;
  const catalogue::DrawingResources* provided_;
  TableDirectory& tables_;
  const TemplateEnvironment& environment_;
  // Key field names by table name as records spell it.
  std::map<std::wstring, std::vector<std::wstring>, std::less<>> key_fields_;
  // Classes by a key value as records spell it (null: no class of that name); found by hash,
  // once for every record a walk reads.
  std::unordered_map<std::wstring, const catalogue::ObjectClass*> classes_by_key_;
  // The last answers of keyFieldsOf and classNamed: consecutive records mostly repeat them.
  std::wstring last_table_;
  const std::vector<std::wstring>* last_key_fields_ = nullptr;
  std::wstring last_key_;
  const catalogue::ObjectClass* last_class_ = nullptr;
  std::map<const catalogue::ObjectClass*, std::vector<TableRules>> rules_;
  // The records of the last entity read by records().
  std::vector<TableRecord> records_;
  RecordCursor cursor_;
  std::map<std::pair<const catalogue::TableDefinition*, const catalogue::ObjectClass*>, NewRecord>
      new_records_;
  std::map<const catalogue::ObjectClass*, bool> dependencies_;
};

// True when `value` equals `text` read as a value of its own type: an Integer against the
// text as an integer, a Real exactly against the text as a number, a Character character
// for character. An unset or Point value never equals.
bool valueEqualsText(const Value& value, std::wstring_view text);

// The value as text by the conversion rules, or an empty text for an unset value.
std::wstring textOrEmpty(const Value& value);

}  // namespace objdata
