// Every pair of encodings, cut in many ways. Takes long, so it has that label.
#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "tests/support/StreamDriver.h"

namespace Orska::Support::Testing {
namespace {

std::vector<int> AllEncodings() {
    std::vector<int> encodings(ENCODING_COUNT);
    std::iota(encodings.begin(), encodings.end(), 0);
    return encodings;
}

TEST(StreamAllPairs, WriteTheSameBytesHoweverCut) {
    CheckPairs(AllEncodings(), AllEncodings(), 12);
}

}  // namespace
}  // namespace Orska::Support::Testing
