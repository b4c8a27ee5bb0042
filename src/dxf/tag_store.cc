#include "dxf/tag_store.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>

namespace dxf {

uint32_t TagStore::newChunk(uint64_t count) {
  uint64_t slot_count = std::max<uint64_t>(1, (count + kSlotSize - 1) / kSlotSize);
  uint64_t first = uint64_t{slots_.size()} << kSlotBits;
  if (first + slot_count * kSlotSize > UINT32_MAX)
    throw std::length_error("drawing has too many tags");
  // Tag is an aggregate, so the allocation holds Tag objects as soon as they are written.
  auto* base = static_cast<Tag*>(std::malloc(slot_count * kSlotSize * sizeof(Tag)));
  if (base == nullptr) throw std::bad_alloc();
  chunks_.emplace_back(base);
  for (uint64_t i = 0; i < slot_count; ++i) slots_.push_back(base + i * kSlotSize);
  used_ = static_cast<uint32_t>(first);
  chunk_end_ = static_cast<uint32_t>(first + slot_count * kSlotSize);
  return used_;
}

uint32_t TagStore::allocate(uint32_t count) {
  if (slots_.empty() || uint64_t{used_} + count > chunk_end_) newChunk(count);
  uint32_t first = used_;
  used_ += count;
  return first;
}

bool TagStore::growInPlace(uint32_t first, uint32_t old_count, uint32_t count) {
  if (first + old_count != used_ || uint64_t{first} + count > chunk_end_) return false;
  used_ = first + count;
  return true;
}

uint32_t TagStore::append(uint32_t run_first, const Tag& tag) {
  if (slots_.empty() || used_ == chunk_end_) {
    uint32_t run_length = slots_.empty() ? 0 : used_ - run_first;
    // A run that fills a chunk (a large header) gets room to double.
    uint64_t want = run_length + 1 > kSlotSize / 2 ? uint64_t{run_length} * 2 + 1 : kSlotSize;
    Tag* old_place = run_length == 0 ? nullptr : range(run_first, run_length).data();
    run_first = newChunk(want);
    if (run_length > 0)
      std::memcpy(range(run_first, run_length).data(), old_place, run_length * sizeof(Tag));
    used_ = run_first + run_length;
  }
  range(used_, 1)[0] = tag;
  ++used_;
  return run_first;
}

}  // namespace dxf
