#include "maintenance/draw_order.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace maintenance {

namespace {

constexpr size_t kNone = static_cast<size_t>(-1);

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

  // The first position after `after` whose rank is less than `bound`, or kNone.
  size_t firstBelow(size_t after, int32_t bound) const {
    size_t node = leaves_ + after;
    // Climb until a right sibling's subtree holds a smaller rank.
    while (true) {
      if (node == 1) return kNone;
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

 private:
  size_t leaves_ = 1;
  std::vector<int32_t> tree_;
};

// A set of positions as bits, each 64-bit word summarised by a bit of the level above.
class PositionSet {
 public:
  explicit PositionSet(size_t size) {
    do {
      size = (size + 63) / 64;
      levels_.emplace_back(size, 0);
    } while (size > 1);
  }
  // While filling: the members of `other`, a set of the same size, and `p`; then
  // summarise() once.
  void copyMembers(const PositionSet& other) { levels_[0] = other.levels_[0]; }
  void addMember(size_t p) { levels_[0][p / 64] |= uint64_t{1} << (p % 64); }
  void summarise() {
    for (size_t k = 1; k < levels_.size(); ++k) {
      std::fill(levels_[k].begin(), levels_[k].end(), 0);
      for (size_t w = 0; w < levels_[k - 1].size(); ++w) {
        if (levels_[k - 1][w] != 0) levels_[k][w / 64] |= uint64_t{1} << (w % 64);
      }
    }
  }
  void erase(size_t p) {
    for (std::vector<uint64_t>& level : levels_) {
      uint64_t& word = level[p / 64];
      word &= ~(uint64_t{1} << (p % 64));
      if (word != 0) return;
      p /= 64;
    }
  }
  // The least member after `p`, or kNone.
  size_t next(size_t p) const {
    size_t k = 0;
    uint64_t found = 0;
    for (;; ++k, p /= 64) {
      if (k == levels_.size()) return kNone;
      const unsigned bit = p % 64;
      found = bit == 63 ? 0 : levels_[k][p / 64] & (~uint64_t{0} << (bit + 1));
      if (found != 0) break;
    }
    size_t at = (p / 64) * 64 + static_cast<size_t>(std::countr_zero(found));
    while (k-- > 0) at = at * 64 + static_cast<size_t>(std::countr_zero(levels_[k][at]));
    return at;
  }

 private:
  std::vector<std::vector<uint64_t>> levels_;
};

// Turn i's chain runs from i through the later positions whose ranks are new strict minima:
// each takes the entry of the one before it, and i takes the last one's. `Finder` gives the
// first position after p below a rank and is told of every rank that changes.
template <typename Finder>
void exchangeTurns(std::vector<int32_t>& current, std::vector<size_t>& order, Finder& finder) {
  std::vector<size_t> chain;
  for (size_t i = 0; i + 1 < current.size(); ++i) {
    // Found before anything moves.
    chain.clear();
    for (size_t at = finder.firstBelow(i, current[i]); at != kNone;
         at = finder.firstBelow(at, current[at]))
      chain.push_back(at);
    if (chain.empty()) continue;
    size_t moved = order[i];
    int32_t moved_rank = current[i];
    for (size_t at : chain) {
      std::swap(moved, order[at]);
      const int32_t was = current[at];
      current[at] = moved_rank;
      finder.raised(at, was, moved_rank);
      moved_rank = was;
    }
    order[i] = moved;
    current[i] = moved_rank;  // no later turn looks at position i again
  }
}

struct TreeFinder {
  MinimumTree tree;
  size_t firstBelow(size_t after, int32_t bound) const { return tree.firstBelow(after, bound); }
  void raised(size_t at, int32_t, int32_t now) { tree.set(at, now); }
};

// For each level l (ranks numbered in order from 0), the positions whose level is below
// it: a chain's next link is the next member of one set, found in a few word operations.
class LevelFinder {
 public:
  LevelFinder(std::span<const int32_t> levels, size_t count) {
    // The positions of each level, in one pass.
    std::vector<size_t> first(count + 1, 0);
    for (int32_t level : levels) ++first[static_cast<size_t>(level) + 1];
    for (size_t l = 1; l <= count; ++l) first[l] += first[l - 1];
    std::vector<size_t> positions(levels.size());
    std::vector<size_t> fill(first.begin(), first.end() - 1);
    for (size_t p = 0; p < levels.size(); ++p)
      positions[fill[static_cast<size_t>(levels[p])]++] = p;

    below_.reserve(count);
    below_.emplace_back(levels.size());
    for (size_t l = 1; l < count; ++l) {
      below_.emplace_back(levels.size());
      below_[l].copyMembers(below_[l - 1]);
      for (size_t k = first[l - 1]; k < first[l]; ++k) below_[l].addMember(positions[k]);
      below_[l].summarise();
    }
  }
  size_t firstBelow(size_t after, int32_t level) const {
    return below_[static_cast<size_t>(level)].next(after);
  }
  void raised(size_t at, int32_t was, int32_t now) {
    for (int32_t l = was + 1; l <= now; ++l) below_[static_cast<size_t>(l)].erase(at);
  }

 private:
  std::vector<PositionSet> below_;
};

}  // namespace

std::vector<size_t> exchangeSortOrder(std::span<const int32_t> ranks) {
  std::vector<size_t> order(ranks.size());
  for (size_t i = 0; i < order.size(); ++i) order[i] = i;
  if (ranks.size() < 2) return order;
  // Ranks numbered in order: the procedure only compares them.
  std::vector<int32_t> distinct(ranks.begin(), ranks.end());
  std::sort(distinct.begin(), distinct.end());
  distinct.erase(std::unique(distinct.begin(), distinct.end()), distinct.end());
  std::vector<int32_t> current(ranks.size());
  for (size_t i = 0; i < ranks.size(); ++i) {
    current[i] = static_cast<int32_t>(std::lower_bound(distinct.begin(), distinct.end(), ranks[i]) -
                                      distinct.begin());
  }
  // A set per level while they are few: a drawing's classes have a few dozen draw orders.
  constexpr size_t kMostLevels = 64;
  if (distinct.size() <= kMostLevels) {
    LevelFinder finder(current, distinct.size());
    exchangeTurns(current, order, finder);
  } else {
    TreeFinder finder{MinimumTree(current)};
    exchangeTurns(current, order, finder);
  }
  return order;
}

}  // namespace maintenance
