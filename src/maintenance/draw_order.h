// The draw order TAXOR_SORT gives entities: ascending rank, in exactly the order of the
// exchange procedure the command has always used, ties included, but computed fast.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace maintenance {

// The order in which the exchange procedure leaves `ranks`: repeated passes that, for each
// position i and each later position j, exchange the entries at i and j when the rank at i
// is greater. Gives, for each final position, the index of the entry that ends there.
//
// One pass already sorts (after position i's turn it holds the least rank of the rest), and
// position i's turn moves entries only along the chain of later positions whose ranks are
// new strict minima: each takes the entry of the one before, and i takes the last. A chain
// has at most d links for d distinct ranks; each is the next member of a bit set of the
// positions below a rank (a few word operations), or for more than 64 ranks found in a tree
// of minima in O(log n): O(n * d) or O(n * d * log n) instead of the procedure's O(n^2).
std::vector<size_t> exchangeSortOrder(std::span<const int32_t> ranks);

}  // namespace maintenance
