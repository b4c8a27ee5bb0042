// What commands ask of nearly every record, read in one pass over its tags: by the reader as
// the file streams past, and again for a record whose tags change.
#pragma once

#include <string_view>

#include "dxf/number_text.h"

namespace dxf {

struct RecordFacts {
  uint64_t own_handle = 0;   // code 5 (105 for DIMSTYLE) before the first subclass marker
  uint64_t xdict = 0;        // the 360 of "102 {ACAD_XDICTIONARY", before the first marker
  bool xdict_group = false;  // such a group is there, whatever it holds
  bool paper = false;        // the first 67 (before the type's own subclass) holds a 1
  // Where the value of the entity's layer tag (its first 8 in the AcDbEntity group) begins,
  // counted from the record's first byte in the file; 0 when not known that way.
  uint32_t layer_at = 0;
  // That layer tag is the first of the AcDbEntity group: what the group holds besides it
  // follows it.
  bool layer_opens_group = false;
};

class RecordFactsReader {
 public:
  // Takes the record's tags in order, its code 0 tag included. `record_start`, when given,
  // is the record's first byte in the file, where `value` then lies.
  void add(int code, std::string_view value, const char* record_start = nullptr) {
    if (done_) return;
    if (code == 100) {
      common_ = handle_open_ = false;
      done_ = value != "AcDbEntity";
      // Only the first such group holds the layer, as property reads take it.
      entity_group_ = !done_ && !layer_over_;
      group_fresh_ = entity_group_;
      layer_over_ = true;
      in_app_group_ = false;
      return;
    }
    const bool fresh = group_fresh_;
    group_fresh_ = false;
    if (code == 101 || code >= 1000) {
      entity_group_ = false;
      layer_over_ = true;
    }
    if (code == 8 && entity_group_ && !in_app_group_) {
      entity_group_ = false;
      if (record_start != nullptr && value.data() > record_start) {
        facts_.layer_at = static_cast<uint32_t>(value.data() - record_start);
        facts_.layer_opens_group = fresh;
      }
    }
    if (code == 67 && !seen_paper_) {
      seen_paper_ = true;
      facts_.paper = value.find('1') != std::string_view::npos;
    }
    if (code == 102) {
      in_app_group_ = !value.empty() && value.front() == '{';
      handle_open_ = false;
      if (common_) in_xdict_ = value == "{ACAD_XDICTIONARY";
      facts_.xdict_group |= in_xdict_;
    } else if (common_ && in_xdict_ && code == 360 && facts_.xdict == 0) {
      facts_.xdict = parseHandle(value);
    } else if (handle_open_ && (code == 5 || code == 105) && facts_.own_handle == 0) {
      facts_.own_handle = parseHandle(value);
    }
  }
  const RecordFacts& facts() const { return facts_; }
  // Whether the rest of the record can change nothing: a subclass of its own has begun.
  bool done() const { return done_; }

 private:
  RecordFacts facts_;
  bool done_ = false;
  bool in_xdict_ = false;
  bool common_ = true;       // before the first subclass marker
  bool handle_open_ = true;  // before the first marker or application group
  bool seen_paper_ = false;
  bool entity_group_ = false;  // inside the AcDbEntity group, where the layer is looked for
  bool group_fresh_ = false;   // and no tag of it read yet
  bool layer_over_ = false;    // that group, or the end of the record's own data, was passed
  bool in_app_group_ = false;
};

}  // namespace dxf
