// The two algorithms under TAXOR_ROUND and TAXOR_SORT, against slow literal references on
// many random inputs.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "maintenance/decimal_rounding.h"
#include "maintenance/draw_order.h"

namespace {

// The exchange procedure exactly as TAXOR_SORT has always run it.
std::vector<size_t> literalExchangeSort(std::vector<int32_t> ranks) {
  std::vector<size_t> order(ranks.size());
  for (size_t i = 0; i < order.size(); ++i) order[i] = i;
  for (bool exchanged = true; exchanged;) {
    exchanged = false;
    for (size_t i = 0; i < ranks.size(); ++i) {
      for (size_t j = i + 1; j < ranks.size(); ++j) {
        if (ranks[i] > ranks[j]) {
          std::swap(ranks[i], ranks[j]);
          std::swap(order[i], order[j]);
          exchanged = true;
        }
      }
    }
  }
  return order;
}

TEST(DrawOrderTest, TiesTradePlacesAsTheExchangeProcedureDoes) {
  // Entities A, B, C of ranks 2, 2, 1 end as C, B, A.
  EXPECT_EQ(maintenance::exchangeSortOrder(std::vector<int32_t>{2, 2, 1}),
            (std::vector<size_t>{2, 1, 0}));
  EXPECT_TRUE(maintenance::exchangeSortOrder({}).empty());
}

TEST(DrawOrderTest, SameOrderAsTheExchangeProcedureOnRandomRanks) {
  std::mt19937 random(20261124);
  for (int round = 0; round < 4000; ++round) {
    size_t size = std::uniform_int_distribution<size_t>(0, round < 3000 ? 12 : 300)(random);
    int distinct = std::uniform_int_distribution<int>(1, 8)(random);
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

// The exact decimal expansion of a double of moderate size, by big-number arithmetic: the
// value is m * 2^e, so for e < 0 its digits are those of m * 5^-e with -e fraction digits.
std::string exactDecimal(double value) {
  int exponent = 0;
  double fraction = std::frexp(std::fabs(value), &exponent);
  auto mantissa = static_cast<uint64_t>(std::ldexp(fraction, 53));
  exponent -= 53;
  std::vector<int> digits;  // least significant first
  for (uint64_t m = mantissa; m > 0; m /= 10) digits.push_back(static_cast<int>(m % 10));
  auto multiply = [&](int factor) {
    int carry = 0;
    for (int& d : digits) {
      int v = d * factor + carry;
      d = v % 10;
      carry = v / 10;
    }
    for (; carry > 0; carry /= 10) digits.push_back(carry % 10);
  };
  int fraction_digits = 0;
  for (; exponent > 0; --exponent) multiply(2);
  for (; exponent < 0; ++exponent, ++fraction_digits) multiply(5);
  while (static_cast<int>(digits.size()) <= fraction_digits) digits.push_back(0);
  std::string text = value < 0 ? "-" : "";
  for (int i = static_cast<int>(digits.size()) - 1; i >= 0; --i) {
    text += static_cast<char>('0' + digits[i]);
    if (i == fraction_digits && i > 0) text += '.';
  }
  if (fraction_digits == 0) text += ".";
  return text;
}

// Rounds the exact expansion as decimal text, half away from zero, and reads it back.
double referenceRound(double value, int places) {
  std::string text = exactDecimal(value);
  size_t cut = text.find('.') + 1 + places;
  while (text.size() <= cut) text += '0';
  bool up = text[cut] >= '5';
  text.resize(cut);
  if (up) {
    size_t i = text.size();
    while (i-- > 0) {
      if (text[i] == '.' || text[i] == '-') continue;
      if (text[i] != '9') {
        ++text[i];
        break;
      }
      text[i] = '0';
      if (i == 0 || (i == 1 && text[0] == '-')) text.insert(i, 1, '1');
    }
  }
  return std::strtod(text.c_str(), nullptr);
}

TEST(DecimalRoundingTest, HalvesGoAwayFromZero) {
  struct Case {
    double value;
    int places;
    double expected;
  };
  const Case cases[] = {
      {0.125, 2, 0.13},   {-0.125, 2, -0.13}, {2.5, 0, 3},        {-2.5, 0, -3},
      {2.71828, 2, 2.72}, {2.71828, 0, 3},    {3.14159, 2, 3.14}, {9.995, 2, 9.99},
      {9.9951, 2, 10.0},  {0.5, 0, 1},        {1.005, 2, 1.0},    {12.125, 3, 12.125},
      {1e300, 2, 1e300},  {0, 3, 0},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(maintenance::roundToPlaces(c.value, c.places), c.expected)
        << c.value << " to " << c.places;
  }
  EXPECT_TRUE(std::isnan(maintenance::roundToPlaces(NAN, 2)));
}

TEST(DecimalRoundingTest, SameAsTheExactDecimalReference) {
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
        << exactDecimal(value) << " to " << p;
  }
}

TEST(DecimalRoundingTest, PlacesAreTheMostAfterAPoint) {
  EXPECT_EQ(maintenance::decimalPlaces(std::vector<std::wstring>{L"0.5", L"12.125"}), 3);
  EXPECT_EQ(maintenance::decimalPlaces(std::vector<std::wstring>{L"10", L"1:3"}), 0);
  EXPECT_EQ(maintenance::decimalPlaces(std::vector<std::wstring>{}), 0);
}

}  // namespace
