// Attached record pairs: an extension dictionary and the one XRECORD it holds, made for an
// object together and kept as a row of the drawing (see Document::isAttached).
#pragma once

#include <cstdint>
#include <string_view>

#include "dxf/document.h"

namespace dxf {

// Makes an object's extension dictionary holding one XRECORD, hard-owned under `key`, as an
// attached record pair (see Document::isAttached), encoding each value as it comes. One at
// a time per drawing.
class AttachmentBuilder {
 public:
  explicit AttachmentBuilder(Document& doc) : doc_(doc) {}
  AttachmentBuilder(const AttachmentBuilder&) = delete;
  AttachmentBuilder& operator=(const AttachmentBuilder&) = delete;

  // `source`: the caller's own bytes for the key, the cloning flag and the values. When the
  // pair made last came from the same, this one takes its shape as it is (true), and begin
  // and add are not called. Classifying attaches the same defaults to entity after entity.
  bool reuseShape(std::string_view source);
  // `key` is the entry's name as the file writes it; `cloning_flag` gives the XRECORD the
  // duplicate record cloning flag (280 1) that drawings from R2000 on write.
  AttachmentBuilder& begin(std::string_view key, bool cloning_flag);
  // The XRECORD's values, in order.
  AttachmentBuilder& add(int code, std::string_view value);
  // Makes both for the object with handle `owner`, with handles `dictionary` and `xrecord`,
  // and announces them in that order; returns the XRECORD's id.
  RecordId finish(Handle owner, Handle dictionary, Handle xrecord);

 private:
  Document& doc_;
  uint32_t xrecord_tags_ = 0;
  uint32_t dictionary_size_ = 0;
  uint32_t shape_ = UINT32_MAX;                    // the shape reused
  Document::ShapeSource* source_noted_ = nullptr;  // where reuseShape noted the source
};

}  // namespace dxf
