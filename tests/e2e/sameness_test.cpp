// A result does not depend on the machine: threads and instruction sets.

#include <gtest/gtest.h>

#include <string>

#include "platform/safe_file.h"
#include "tests/e2e/workshop.h"

namespace zemora::test {
namespace {

std::vector<std::uint8_t> stored(const Workshop& workshop, const std::string& name) {
    std::string reason;
    auto bytes = read_file_whole(workshop.path(name), reason);
    EXPECT_TRUE(bytes.has_value()) << name << ": " << reason;
    return bytes.value_or(std::vector<std::uint8_t>());
}

TEST(Sameness, PicturesAreTheSameForAllThreadsAndInstructionSets) {
    Workshop workshop;
    save_pair(workshop, misaligned_views(), "rose_l.bmp", "rose_r.bmp");
    const auto mounted = [&](const std::string& set, const std::string& threads) {
        workshop.environment = {"ZEMORA_ISA=" + set, "OMP_NUM_THREADS=" + threads};
        const Outcome outcome = workshop.run({"rose_l.bmp", "rose_r.bmp"});
        EXPECT_EQ(outcome.exit_code, 0) << outcome.text;
        return stored(workshop, "cs/rose_cs.bmp");
    };
    const auto expected = mounted("portable", "1");
    ASSERT_FALSE(expected.empty());
    for (const char* set : {"portable", "avx2", "avx512"}) {
        for (const char* threads : {"2", "8"}) {
            EXPECT_EQ(mounted(set, threads), expected) << set << ", " << threads << " threads";
        }
    }
}

}  // namespace
}  // namespace zemora::test
