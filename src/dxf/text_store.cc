#include "dxf/text_store.h"

#include <cstring>
#include <stdexcept>

namespace dxf {

TextRef TextStore::add(std::string_view text) {
  uint64_t capacity = chunks_.size() * kChunkSize;
  bool big = text.size() > kChunkSize;
  if (used_ + text.size() > capacity || big) {
    // A value longer than a chunk gets a chunk of its own size and reserves the address
    // slots it spans; nothing is placed after it in those slots.
    used_ = capacity;
    uint64_t slots = big ? (text.size() + kChunkSize - 1) / kChunkSize : 1;
    chunks_.push_back(std::make_unique<char[]>(slots * kChunkSize));
    for (uint64_t i = 1; i < slots; ++i) chunks_.push_back(nullptr);
  }
  uint64_t pos = base_.size() + used_;
  if (pos + text.size() > UINT32_MAX) throw std::length_error("drawing text exceeds 4 GiB");
  if (!text.empty()) {
    std::memcpy(chunks_[used_ >> kChunkBits].get() + (used_ & (kChunkSize - 1)), text.data(),
                text.size());
  }
  used_ = big ? chunks_.size() * kChunkSize : used_ + text.size();
  return {static_cast<uint32_t>(pos), static_cast<uint32_t>(text.size())};
}

}  // namespace dxf
