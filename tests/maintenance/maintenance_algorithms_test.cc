// The two algorithms under TAXOR_ROUND and TAXOR_SORT, against slow literal references on
// many random inputs.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "maintenance/decimal_rounding.h"
#include "maintenance/draw_order.h"

namespace {

// The exchange procedure as TAXOR_SORT has always run it, without its repeat until nothing is
// exchanged: after one pass nothing is. Ties trade places: ranks 2, 2, 1 end as C, B, A.
std::vector<size_t> literalExchangeSort(std::vector<int32_t> ranks) {
  std::vector<size_t> order(ranks.size());
  for (size_t i = 0; i < order.size(); ++i) order[i] = i;
  for (size_t i = 0; i < ranks.size(); ++i) {
    for (size_t j = i + 1; j < ranks.size(); ++j) {
      if (ranks[i] <= ranks[j]) continue;
      std::swap(ranks[i], ranks[j]);
      std::swap(order[i], order[j]);
    }
  }
  return order;
}

TEST(DrawOrderTest, SameOrderAsTheExchangeProcedureOnRandomRanks) {
  std::mt19937 random(20261124);
  for (int round = 0; round < 4004; ++round) {
    size_t size = std::uniform_int_distribution<size_t>(0, round < 3000 ? 12 : 300)(random);
    // Up to 8 draw orders, as drawings mostly have, or up to 100 in every fourth round.
    int distinct = std::uniform_int_distribution<int>(1, round % 4 == 3 ? 100 : 8)(random);
    if (round >= 4000) {
      // Past 4 096 positions, with as many draw orders as the bit sets take and one more.
      size = 4100;
      distinct = 63 + (round - 4000);
    }
    std::vector<int32_t> ranks(size);
    for (int32_t& rank : ranks) {
      int pick = std::uniform_int_distribution<int>(0, distinct - 1)(random);
      // The unclassified rank is the least 32-bit number.
      rank = pick == 0 ? INT32_MIN : pick * 7 - 20;
    }
    ASSERT_EQ(maintenance::exchangeSortOrder(ranks), literalExchangeSort(ranks))
        << "round " << round;
  }
}

// Rounds the exact decimal expansion, as the C library writes it, half away from zero as
// decimal text, and reads it back.
double referenceRound(double value, int places) {
  std::vector<char> exact(1500);
  std::snprintf(exact.data(), exact.size(), "%.1100f", value);
  std::string text = exact.data();
  size_t cut = text.find('.') + 1 + places;
  bool up = text[cut] >= '5';
  text.resize(cut);
  for (size_t i = text.size(); up && i-- > 0;) {
    if (text[i] == '.' || text[i] == '-') continue;
    up = text[i] == '9';
    text[i] = up ? '0' : static_cast<char>(text[i] + 1);
  }
  if (up) text.insert(text[0] == '-' ? 1 : 0, "1");
  return std::strtod(text.c_str(), nullptr);
}

TEST(DecimalRoundingTest, SameAsTheExactDecimalReference) {
  // Beyond what the reference reads: huge values stay, NaN stays NaN.
  EXPECT_EQ(maintenance::roundToPlaces(1e300, 2), 1e300);
  EXPECT_TRUE(std::isnan(maintenance::roundToPlaces(NAN, 2)));
  std::mt19937_64 random(20261124);
  std::uniform_int_distribution<int> places(0, 6);
  for (int round = 0; round < 30000; ++round) {
    int p = places(random);
    double value = 0;
    switch (round % 3) {
      case 0:  // a decimal near a cut, often an exact binary half
        value =
            static_cast<double>(std::uniform_int_distribution<int64_t>(-200000, 200000)(random)) /
            std::pow(10.0, std::uniform_int_distribution<int>(0, 7)(random));
        break;
      case 1:  // a dyadic value: many exact halves
        value = std::ldexp(
            static_cast<double>(std::uniform_int_distribution<int64_t>(-4096, 4096)(random)),
            -std::uniform_int_distribution<int>(0, 10)(random));
        break;
      default:  // any bits of a moderate size
        value = std::uniform_real_distribution<double>(-1e5, 1e5)(random);
        break;
    }
    ASSERT_EQ(maintenance::roundToPlaces(value, p), referenceRound(value, p))
        << std::hexfloat << value << " to " << p;
  }
}

TEST(DecimalRoundingTest, PlacesAreTheMostAfterAPoint) {
  EXPECT_EQ(maintenance::decimalPlaces(std::vector<std::wstring>{L"0.5", L"12.125"}), 3);
  EXPECT_EQ(maintenance::decimalPlaces(std::vector<std::wstring>{L"10", L"1:3"}), 0);
  EXPECT_EQ(maintenance::decimalPlaces(std::vector<std::wstring>{}), 0);
}

}  // namespace
