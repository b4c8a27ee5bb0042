// The bytes of every tag value: the file's own text plus the values and record encodings
// added since loading.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dxf {

// Where one value's bytes live. Views handed out stay valid for the store's lifetime (only
// the last encoding may be rewritten in place), so callers may hold a name while they edit
// the drawing.
struct TextRef {
  uint32_t pos = 0;
  uint32_t len = 0;
};

class TextStore {
 public:
  // The largest file text the 32-bit positions can address, with room left for additions.
  static constexpr uint64_t kMaxBase = uint64_t{1} << 31;

  // Values made for edits and the encodings of whole records fill chunks of their own, so
  // that the records an operation makes lie next to one another.
  enum class Lane { kValues, kEncodings };

  TextStore() = default;
  TextStore(const TextStore&) = delete;
  TextStore& operator=(const TextStore&) = delete;
  TextStore(TextStore&&) = default;
  TextStore& operator=(TextStore&&) = default;

  // Requires: base.size() <= kMaxBase; `base` outlives the store. A base short enough to
  // lie inside the string object that holds it (a short-string buffer) moves whenever that
  // object moves, as a drawing does when it is returned: such a base is copied.
  void setBase(std::string_view base) {
    if (base.size() < sizeof(std::string)) {
      ownBase(std::string(base));
    } else {
      base_ = base;
    }
  }
  // Takes ownership of a decoded base (binary files decode their values into text). It is
  // kept on the heap, so that views of it survive moving the store.
  void ownBase(std::string base) {
    owned_base_ = std::make_unique<const std::string>(std::move(base));
    base_ = *owned_base_;
  }

  std::string_view view(TextRef ref) const {
    if (ref.pos < base_.size()) return base_.substr(ref.pos, ref.len);
    uint64_t off = ref.pos - base_.size();
    return {slots_[off >> kChunkBits] + (off & (kChunkSize - 1)), ref.len};
  }

  TextRef add(std::string_view text, Lane lane = Lane::kValues);
  // Puts `text` where `ref` lies when `ref` is the last text added to the encodings lane
  // and its chunk has room; returns the new place, or nothing (then nothing changed).
  std::optional<TextRef> replaceLast(TextRef ref, std::string_view text);

  std::string_view base() const { return base_; }

 private:
  static constexpr int kChunkBits = 20;
  static constexpr uint64_t kChunkSize = uint64_t{1} << kChunkBits;
  static constexpr uint64_t kNoSlot = UINT64_MAX;

  struct Cursor {
    uint64_t slot = kNoSlot;  // the slot whose chunk the lane fills
    uint64_t used = 0;        // bytes of it handed out
  };
  uint64_t slotStart(uint64_t slot) const { return base_.size() + slot * kChunkSize; }

  std::string_view base_;
  std::unique_ptr<const std::string> owned_base_;
  // The memory handed out, a slot's worth each or, for a value longer than a slot, as many
  // slots as it spans in one piece.
  std::vector<std::unique_ptr<char[]>> chunks_;
  // Where each address slot's bytes begin: in its own chunk, or inside the one piece of a
  // long value, whose parts (the tags of a long encoding) are read by address too.
  std::vector<char*> slots_;
  Cursor lanes_[2];
};

}  // namespace dxf
