// Shared by the entity factory's source files: where a new entity goes and how its tags
// are put together.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/status.h"
#include "dxf/document.h"
#include "dxf/entity_factory.h"

namespace dxf::factory {

// Where a new entity goes and what its common tags say.
struct Target {
  RecordId before = kNoRecord;  // the entity is linked just before this record
  std::string owner;            // the owner handle; empty when none is written (R12)
  std::string layer;            // the layer name as its table entry writes it
  std::optional<int> color;
  bool r12 = false;
  bool handles = true;
};

// Checks the layer, colour and block of `common` and finds where the entity goes.
base::Result<Target> resolve(Document& doc, const CommonProps& common);
// kUnsupported for an R12 drawing, naming `type`.
base::Status requireR2000(const Document& doc, std::string_view type);
// True when the drawing writes handles: always from R13 on, in R12 when $HANDLING is set
// or some record has one.
bool usesHandles(const Document& doc);
constexpr double kPi = 3.14159265358979323846;

bool finite(const Point3& p);
// A caller's name, quoted for an error message.
std::string quoted(std::wstring_view name);

// Collects the tags of one record; the common entity tags come first.
class Builder {
 public:
  // Starts `type` with its handle, owner (`owner` when given, else the target's), layer
  // and colour.
  Builder(Document& doc, const Target& target, std::string_view type, std::string_view owner = {});

  // The new record's handle text; empty when the drawing writes no handles.
  const std::string& handle() const { return handle_; }

  void subclass(std::string_view marker);  // left out of R12 drawings
  void raw(int code, std::string_view text);
  void text(int code, std::wstring_view text);
  void real(int code, double value);
  void integer(int code, int64_t value);
  void point(int code, const Point3& p);  // code, code + 10, code + 20
  void point2(int code, double x, double y);

  // Links the record just before `target.before` and returns it.
  RecordId finish();

 private:
  Document& doc_;
  const Target& target_;
  std::vector<Tag> tags_;
  std::string handle_;
};

}  // namespace dxf::factory
