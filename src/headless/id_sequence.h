// A list of object ids kept as the differences between neighbours: a selection of a whole
// drawing lists its entities in file order, a byte or two each instead of eight.
#pragma once

#include <string>
#include <vector>

#include "host/types.h"

namespace headless {

class IdSequence {
 public:
  void assign(const std::vector<host::ObjectId>& ids);
  std::vector<host::ObjectId> ids() const;
  bool empty() const { return count_ == 0; }

 private:
  std::string deltas_;  // zigzag LEB128 of each id less the one before
  size_t count_ = 0;
};

}  // namespace headless
