// Drawing resources that classes need, made available from other files.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace host {

// Kinds of resources, as bits of a mask.
enum ResourceKind : uint32_t {
  kResourceBlocks = 1,
  kResourceDimensionStyles = 2,
  kResourceLayers = 4,
  kResourceLayouts = 8,
  kResourceLinetypes = 16,
  kResourceMLeaderStyles = 32,
  kResourceMlineStyles = 64,
  kResourcePatterns = 128,
  kResourceTextStyles = 256,
};

// Names by kind (one bit of ResourceKind per key).
using ResourceNames = std::map<uint32_t, std::vector<std::wstring>>;

}  // namespace host
