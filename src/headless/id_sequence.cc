#include "headless/id_sequence.h"

namespace headless {

void IdSequence::assign(const std::vector<host::ObjectId>& ids) {
  deltas_.clear();
  deltas_.shrink_to_fit();
  uint64_t before = 0;
  for (host::ObjectId id : ids) {
    const auto delta = static_cast<int64_t>(id.value - before);
    uint64_t zigzag = (static_cast<uint64_t>(delta) << 1) ^ static_cast<uint64_t>(delta >> 63);
    while (zigzag >= 0x80) {
      deltas_.push_back(static_cast<char>((zigzag & 0x7F) | 0x80));
      zigzag >>= 7;
    }
    deltas_.push_back(static_cast<char>(zigzag));
    before = id.value;
  }
  count_ = ids.size();
}

std::vector<host::ObjectId> IdSequence::ids() const {
  std::vector<host::ObjectId> out;
  out.reserve(count_);
  uint64_t value = 0;
  for (size_t at = 0; at < deltas_.size();) {
    uint64_t zigzag = 0;
    for (int shift = 0; at < deltas_.size(); shift += 7) {
      const auto byte = static_cast<unsigned char>(deltas_[at++]);
      zigzag |= static_cast<uint64_t>(byte & 0x7F) << shift;
      if ((byte & 0x80) == 0) break;
    }
    value += (zigzag >> 1) ^ (~(zigzag & 1) + 1);
    out.push_back({value});
  }
  return out;
}

}  // namespace headless
