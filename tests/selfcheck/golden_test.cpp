/// What the check says of figures that are not as they must be. That they are is another test's matter: the
/// program morvale_selfcheck and tests/selfcheck/shared_check.cpp run the list.
#include "selfcheck/golden.h"

#include <gtest/gtest.h>

#include "selfcheck/figures.h"

namespace {

using morvale::selfcheck::Digest;
using morvale::selfcheck::Figures;
using morvale::selfcheck::first_difference;

TEST(Golden, TheFirstFigureThatDiffersIsNamed) {
  const Figures expected = {{"a", 1}, {"b", 2}, {"c", 3}};
  EXPECT_EQ(first_difference(expected, expected), "");
  EXPECT_EQ(first_difference({{"a", 1}, {"b", 9}, {"c", 9}}, expected), "b");
  EXPECT_EQ(first_difference({{"a", 1}, {"b", 2}}, expected), "c") << "one is missing";
  EXPECT_EQ(first_difference({{"a", 1}, {"b", 2}, {"c", 3}, {"d", 4}}, expected), "d") << "one is too many";
  EXPECT_EQ(first_difference({}), "NV21toRGB") << "the golden list itself";
}

TEST(Golden, ADigestSeesEveryByteAndItsPlace) {
  const auto digest = [](const std::string& text) {
    Digest d;
    d.add(text.data(), text.size());
    return d.value();
  };
  const std::string text = "0123456789abcde";
  for (size_t i = 0; i < text.size(); ++i) {
    std::string other = text;
    other[i] ^= 1;
    EXPECT_NE(digest(other), digest(text)) << i;
  }
  EXPECT_NE(digest("89abcdef01234567"), digest("0123456789abcdef"));
}

}  // namespace
