#include "maintenance/draw_order.h"

#include <algorithm>
#include <limits>

namespace maintenance {

namespace {

// Minima of ranks over a power-of-two tree, answering "the first position after p whose
// rank is below x".
class MinimumTree {
 public:
  explicit MinimumTree(std::span<const int32_t> ranks) {
    while (leaves_ < ranks.size()) leaves_ *= 2;
    tree_.assign(2 * leaves_, std::numeric_limits<int32_t>::max());
    for (size_t i = 0; i < ranks.size(); ++i) tree_[leaves_ + i] = ranks[i];
    for (size_t node = leaves_ - 1; node >= 1; --node)
      tree_[node] = std::min(tree_[2 * node], tree_[2 * node + 1]);
  }

  void set(size_t position, int32_t rank) {
    size_t node = leaves_ + position;
    tree_[node] = rank;
    for (node /= 2; node >= 1; node /= 2)
      tree_[node] = std::min(tree_[2 * node], tree_[2 * node + 1]);
  }

  // The first position after `after` whose rank is less than `bound`, or npos.
  size_t firstBelow(size_t after, int32_t bound) const {
    size_t node = leaves_ + after;
    // Climb until a right sibling's subtree holds a smaller rank.
    while (true) {
      if (node == 1) return npos;
      if (node % 2 == 0 && tree_[node + 1] < bound) {
        node += 1;
        break;
      }
      node /= 2;
    }
    // Descend to its leftmost such leaf.
    while (node < leaves_) node = tree_[2 * node] < bound ? 2 * node : 2 * node + 1;
    return node - leaves_;
  }

  static constexpr size_t npos = static_cast<size_t>(-1);

 private:
  size_t leaves_ = 1;
  std::vector<int32_t> tree_;
};

}  // namespace

std::vector<size_t> exchangeSortOrder(std::span<const int32_t> ranks) {
  std::vector<size_t> order(ranks.size());
  for (size_t i = 0; i < order.size(); ++i) order[i] = i;
  if (ranks.size() < 2) return order;
  std::vector<int32_t> current(ranks.begin(), ranks.end());
  MinimumTree minima(current);
  std::vector<size_t> chain;
  for (size_t i = 0; i + 1 < current.size(); ++i) {
    // Later positions whose ranks are new strict minima, found before anything moves.
    chain.clear();
    for (size_t at = minima.firstBelow(i, current[i]); at != MinimumTree::npos;
         at = minima.firstBelow(at, current[at]))
      chain.push_back(at);
    if (chain.empty()) continue;
    // Each takes the entry of the one before it; i takes the last one's.
    size_t moved = order[i];
    int32_t moved_rank = current[i];
    for (size_t at : chain) {
      std::swap(moved, order[at]);
      std::swap(moved_rank, current[at]);
      minima.set(at, current[at]);
    }
    order[i] = moved;
    current[i] = moved_rank;  // no later turn looks at position i again
  }
  return order;
}

}  // namespace maintenance
