#include "dxf/text_store.h"

#include <cstring>
#include <stdexcept>

namespace dxf {

TextRef TextStore::add(std::string_view text, Lane lane) {
  Cursor& cursor = lanes_[static_cast<int>(lane)];
  uint64_t pos;
  if (text.size() > kChunkSize) {
    // A chunk of its own size that reserves the address slots it spans.
    uint64_t first = chunks_.size();
    uint64_t slots = (text.size() + kChunkSize - 1) / kChunkSize;
    chunks_.push_back(std::make_unique_for_overwrite<char[]>(slots * kChunkSize));
    for (uint64_t i = 1; i < slots; ++i) chunks_.push_back(nullptr);
    pos = chunkStart(first);
    if (pos + text.size() > UINT32_MAX) throw std::length_error("drawing text exceeds 4 GiB");
    std::memcpy(chunks_[first].get(), text.data(), text.size());
    return {static_cast<uint32_t>(pos), static_cast<uint32_t>(text.size())};
  }
  if (cursor.chunk == kNoChunk || cursor.used + text.size() > kChunkSize) {
    cursor.chunk = chunks_.size();
    cursor.used = 0;
    chunks_.push_back(std::make_unique_for_overwrite<char[]>(kChunkSize));
  }
  pos = chunkStart(cursor.chunk) + cursor.used;
  if (pos + text.size() > UINT32_MAX) throw std::length_error("drawing text exceeds 4 GiB");
  if (!text.empty()) {
    std::memcpy(chunks_[cursor.chunk].get() + cursor.used, text.data(), text.size());
  }
  cursor.used += text.size();
  return {static_cast<uint32_t>(pos), static_cast<uint32_t>(text.size())};
}

std::optional<TextRef> TextStore::replaceLast(TextRef ref, std::string_view text) {
  Cursor& cursor = lanes_[static_cast<int>(Lane::kEncodings)];
  if (cursor.chunk == kNoChunk || ref.pos < base_.size()) return std::nullopt;
  uint64_t start = chunkStart(cursor.chunk);
  if (ref.pos < start || ref.pos + uint64_t{ref.len} != start + cursor.used) return std::nullopt;
  uint64_t offset = ref.pos - start;
  if (offset + text.size() > kChunkSize) return std::nullopt;
  std::memmove(chunks_[cursor.chunk].get() + offset, text.data(), text.size());
  cursor.used = offset + text.size();
  return TextRef{ref.pos, static_cast<uint32_t>(text.size())};
}

}  // namespace dxf
