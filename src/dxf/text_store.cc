#include "dxf/text_store.h"

#include <cstring>
#include <stdexcept>

namespace dxf {

TextRef TextStore::add(std::string_view text, Lane lane) {
  Cursor& cursor = lanes_[static_cast<int>(lane)];
  uint64_t pos;
  if (text.size() > kChunkSize) {
    // One piece that takes the address slots it spans.
    uint64_t first = slots_.size();
    uint64_t slots = (text.size() + kChunkSize - 1) / kChunkSize;
    pos = slotStart(first);
    if (pos + text.size() > UINT32_MAX) throw std::length_error("drawing text exceeds 4 GiB");
    char* piece =
        chunks_.emplace_back(std::make_unique_for_overwrite<char[]>(slots * kChunkSize)).get();
    for (uint64_t i = 0; i < slots; ++i) slots_.push_back(piece + i * kChunkSize);
    std::memcpy(piece, text.data(), text.size());
    return {static_cast<uint32_t>(pos), static_cast<uint32_t>(text.size())};
  }
  if (cursor.slot == kNoSlot || cursor.used + text.size() > kChunkSize) {
    cursor.slot = slots_.size();
    cursor.used = 0;
    slots_.push_back(
        chunks_.emplace_back(std::make_unique_for_overwrite<char[]>(kChunkSize)).get());
  }
  pos = slotStart(cursor.slot) + cursor.used;
  if (pos + text.size() > UINT32_MAX) throw std::length_error("drawing text exceeds 4 GiB");
  if (!text.empty()) std::memcpy(slots_[cursor.slot] + cursor.used, text.data(), text.size());
  cursor.used += text.size();
  return {static_cast<uint32_t>(pos), static_cast<uint32_t>(text.size())};
}

std::optional<TextRef> TextStore::replaceLast(TextRef ref, std::string_view text) {
  Cursor& cursor = lanes_[static_cast<int>(Lane::kEncodings)];
  if (cursor.slot == kNoSlot || ref.pos < base_.size()) return std::nullopt;
  uint64_t start = slotStart(cursor.slot);
  if (ref.pos < start || ref.pos + uint64_t{ref.len} != start + cursor.used) return std::nullopt;
  uint64_t offset = ref.pos - start;
  if (offset + text.size() > kChunkSize) return std::nullopt;
  std::memmove(slots_[cursor.slot] + offset, text.data(), text.size());
  cursor.used = offset + text.size();
  return TextRef{ref.pos, static_cast<uint32_t>(text.size())};
}

}  // namespace dxf
