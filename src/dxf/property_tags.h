// Shared by the entity property code: where a property's tags sit in a record, value
// conversions, and the handlers of the properties that are not one plain tag.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/status.h"
#include "dxf/document.h"
#include "dxf/entity_properties.h"
#include "dxf/record_edit.h"

namespace dxf::props {

// [begin, end) of a record's tags.
struct TagRange {
  size_t begin = 0;
  size_t end = 0;
};

// The tags of the `occurrence`-th subclass group opened by "100 M" where M is one of the
// '|'-separated `markers`, up to the next marker, embedded object (101) or extended data.
// Records without such a marker (R12) yield the whole record before those.
TagRange subclassGroup(const Document& doc, std::span<const Tag> tags, std::string_view markers,
                       int occurrence = 0);
// Index of the first `code` tag in `range` at or after `from`, outside "102 {APP" groups;
// -1 when there is none.
int findCode(const Document& doc, std::span<const Tag> tags, TagRange range, int code,
             size_t from = 0);
// The tag findCode(subclassGroup(markers), code) finds, in one pass over `tags` (a span,
// or a TagScan, which then decodes the record no further than needed).
template <typename Tags>
std::optional<Tag> findInGroup(const Document& doc, const Tags& tags, std::string_view markers,
                               int code);
// Sets the tag found at `at` or, when `at` is negative, inserts it at `insert_at`.
// Returns true iff the tags changed.
bool putTag(RecordEdit& edit, int at, size_t insert_at, int code, std::string_view raw);
// Sets the first `code` tag of `range`, adding it at the range's end when absent.
bool putInRange(const Document& doc, RecordEdit& edit, TagRange range, int code,
                std::string_view raw);

std::optional<double> asReal(const PropValue& value);
std::optional<int64_t> asInt(const PropValue& value);
const std::wstring* asText(const PropValue& value);
const EntityColor* asColor(const PropValue& value);
base::Status wrongValue(std::string_view expected);
// Text written into a tag must stay on one line of an ASCII drawing.
base::Status checkText(const std::wstring& text);

double degreesToRadians(double degrees);
double radiansToDegrees(double radians);

// Handlers of the properties that need more than one plain tag. Getters read the tags of
// `id` that the caller decoded; each setter returns kUnsupported for a drawing that cannot
// hold the value.
PropValue getColor(const Document& doc, RecordId id, std::span<const Tag> tags);
// The colour that an index tag (62) and a true-colour tag (420), each there or not, give.
PropValue colorOf(const Document& doc, const std::optional<Tag>& index,
                  const std::optional<Tag>& rgb);
base::Status setColor(Document& doc, RecordId id, const PropValue& value);

PropValue getMtextContents(const Document& doc, RecordId id, std::span<const Tag> tags);
base::Status setMtextContents(Document& doc, RecordId id, const PropValue& value);
PropValue getMtextRotation(const Document& doc, RecordId id, std::span<const Tag> tags);
base::Status setMtextRotation(Document& doc, RecordId id, const PropValue& value);
PropValue getTextJustification(const Document& doc, RecordId id, std::span<const Tag> tags);
base::Status setTextJustification(Document& doc, RecordId id, const PropValue& value);

PropValue getPatternAngle(const Document& doc, RecordId id, std::span<const Tag> tags);
base::Status setPatternAngle(Document& doc, RecordId id, const PropValue& value);
PropValue getPatternScale(const Document& doc, RecordId id, std::span<const Tag> tags);
base::Status setPatternScale(Document& doc, RecordId id, const PropValue& value);
PropValue getBackgroundColor(const Document& doc, RecordId id, std::span<const Tag> tags);
base::Status setBackgroundColor(Document& doc, RecordId id, const PropValue& value);

PropValue getMLeaderStyle(const Document& doc, RecordId id, std::span<const Tag> tags);
base::Status setMLeaderStyle(Document& doc, RecordId id, const PropValue& value);
PropValue getMlineStyle(const Document& doc, RecordId id, std::span<const Tag> tags);
base::Status setMlineStyle(Document& doc, RecordId id, const PropValue& value);

}  // namespace dxf::props
