// Storage of every record's tags: fixed-size chunks that never move, so that a record's
// tags stay where they are while others are added, and growth never copies the drawing.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <vector>

#include "dxf/text_store.h"

namespace dxf {

struct Tag {
  int16_t code = 0;
  TextRef value;
};

class TagStore {
 public:
  TagStore() = default;
  TagStore(const TagStore&) = delete;
  TagStore& operator=(const TagStore&) = delete;
  TagStore(TagStore&&) = default;
  TagStore& operator=(TagStore&&) = default;

  // Requires: [first, first + count) was handed out by this store.
  std::span<Tag> range(uint32_t first, uint32_t count) {
    return count == 0 ? std::span<Tag>()
                      : std::span<Tag>(slots_[first >> kSlotBits] + (first & kSlotMask), count);
  }
  std::span<const Tag> range(uint32_t first, uint32_t count) const {
    return count == 0
               ? std::span<const Tag>()
               : std::span<const Tag>(slots_[first >> kSlotBits] + (first & kSlotMask), count);
  }

  // Hands out `count` contiguous tags and returns the index of the first.
  uint32_t allocate(uint32_t count);
  // Grows [first, first + old_count) to `count` tags where it lies, which works only for the
  // range handed out last; returns false when it cannot.
  bool growInPlace(uint32_t first, uint32_t old_count, uint32_t count);
  // For readers: appends `tag` to the run that starts at `run_first` and ends at the last
  // tag handed out, moving the run to a new chunk when the current one is full. Returns
  // the run's first index, which changes when the run moved.
  uint32_t append(uint32_t run_first, const Tag& tag);
  // The index the next tag handed out would get, while the current chunk has room.
  uint32_t next() const { return used_; }

 private:
  static constexpr int kSlotBits = 20;  // a million tags (12 MiB) per slot
  static constexpr uint32_t kSlotSize = uint32_t{1} << kSlotBits;
  static constexpr uint32_t kSlotMask = kSlotSize - 1;

  // Starts a chunk holding at least `count` tags; returns its first index.
  uint32_t newChunk(uint64_t count);

  // Chunks are left uninitialised: memory is touched (and counted) only as tags arrive.
  struct FreeChunk {
    void operator()(Tag* p) const { std::free(p); }
  };

  std::vector<Tag*> slots_;  // a chunk longer than a slot is named by each slot it spans
  std::vector<std::unique_ptr<Tag, FreeChunk>> chunks_;
  uint32_t used_ = 0;       // next free index in the current chunk
  uint32_t chunk_end_ = 0;  // end of the current chunk
};

}  // namespace dxf
