// The bytes of every tag value: the file's own text plus the values added since loading.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace dxf {

// Where one value's bytes live. Views handed out stay valid for the store's lifetime, so
// callers may hold a name while they edit the drawing.
struct TextRef {
  uint32_t pos = 0;
  uint32_t len = 0;
};

class TextStore {
 public:
  // The largest file text the 32-bit positions can address, with room left for additions.
  static constexpr uint64_t kMaxBase = uint64_t{1} << 31;

  TextStore() = default;
  TextStore(const TextStore&) = delete;
  TextStore& operator=(const TextStore&) = delete;
  TextStore(TextStore&&) = default;
  TextStore& operator=(TextStore&&) = default;

  // Requires: base.size() <= kMaxBase; `base` outlives the store or is the store's own.
  void setBase(std::string_view base) { base_ = base; }
  // Takes ownership of a decoded base (binary files decode their values into text).
  void ownBase(std::string base) {
    owned_base_ = std::move(base);
    base_ = owned_base_;
  }

  std::string_view view(TextRef ref) const {
    if (ref.pos < base_.size()) return base_.substr(ref.pos, ref.len);
    uint64_t off = ref.pos - base_.size();
    return {chunks_[off >> kChunkBits].get() + (off & (kChunkSize - 1)), ref.len};
  }

  TextRef add(std::string_view text);

  std::string_view base() const { return base_; }

 private:
  static constexpr int kChunkBits = 20;
  static constexpr uint64_t kChunkSize = uint64_t{1} << kChunkBits;

  std::string_view base_;
  std::string owned_base_;
  std::vector<std::unique_ptr<char[]>> chunks_;
  uint64_t used_ = 0;  // bytes of the address space after base_ handed out or skipped
};

}  // namespace dxf
