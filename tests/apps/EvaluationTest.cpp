#include "apps/evaluate/EvaluationManifest.h"
#include "apps/evaluate/EvaluationReport.h"
#include "apps/evaluate/Statistics.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace kestrelid::evaluation {
namespace {

struct ManifestTest : testing::Test {
    std::variant<std::vector<LabelledPicture>, ManifestError> read(const std::string& text) {
        std::ofstream(path) << text;
        return readManifest(path);
    }
    ~ManifestTest() override { std::filesystem::remove(path); }

    const std::filesystem::path path =
        std::filesystem::temp_directory_path() /
        ("kestrelid-" + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
};

TEST_F(ManifestTest, ReadsColumnsByName) {
    const auto read = this->read("# comment\r\nkind\tnote\tfile\tquad_tl_tr_br_bl\r\n"
                                 "passport-scan\tx\ta b.jpg\t1,2;3.5,2;3,4;1e1,4\textra\n\n"
                                 "other-id\tx\tsub/b.jpg\t-\nother-id\tx\tc.jpg\n");
    ASSERT_TRUE(std::holds_alternative<std::vector<LabelledPicture>>(read));
    const auto& pictures = std::get<std::vector<LabelledPicture>>(read);
    ASSERT_EQ(pictures.size(), 3u);
    EXPECT_EQ(pictures[0].file, path.parent_path() / "a b.jpg");
    EXPECT_TRUE(pictures[0].isPassport());
    ASSERT_TRUE(pictures[0].quad);
    EXPECT_EQ((*pictures[0].quad)[1].x, 3.5);
    EXPECT_EQ((*pictures[0].quad)[3].x, 10.0);
    EXPECT_FALSE(pictures[1].isPassport());
    EXPECT_FALSE(pictures[1].quad);
    EXPECT_FALSE(pictures[2].quad);
}

TEST_F(ManifestTest, NamesTheLineThatIsWrong) {
    const struct {
        const char* text;
        std::size_t line;
    } cases[] = {
        {"", 0},
        {"file\tkind\n", 0},
        {"\nname\tkind\nx\ty\n", 2},
        {"file\tkind\na.jpg\tother\n\tother\n", 3},
        {"file\tkind\na.jpg\n", 2},
        {"file\tkind\tquad\na.jpg\tother\t1,2;3,4;5,6\n", 2},
        {"file\tkind\tquad\na.jpg\tother\t1,2;3,4;5,6;7,x\n", 2},
        {"file\tkind\tquad\na.jpg\tother\t1,2;3,4;5,6;7,inf\n", 2},
    };
    for (const auto& [text, line] : cases) {
        const auto read = this->read(text);
        ASSERT_TRUE(std::holds_alternative<ManifestError>(read)) << text;
        EXPECT_EQ(std::get<ManifestError>(read).line, line) << text;
    }
}

TEST(StatisticsTest, PercentileIsTheNearestRank) {
    EXPECT_EQ(percentile({}, 0.5), 0.0);
    EXPECT_EQ(percentile({7}, 0.1), 7.0);
    EXPECT_EQ(percentile({5, 1, 4, 2, 3}, 0.5), 3.0);
    EXPECT_EQ(percentile({10, 9, 8, 7, 6, 5, 4, 3, 2, 1}, 0.9), 9.0);
    EXPECT_EQ(percentile({10, 9, 8, 7, 6, 5, 4, 3, 2, 1}, 0.1), 1.0);
}

TEST(StatisticsTest, OverlapIsIntersectionByUnion) {
    const NormalizedRect unit{0, 0, 1, 1};
    EXPECT_DOUBLE_EQ(overlap(unit, unit), 1.0);
    EXPECT_DOUBLE_EQ(overlap(unit, {0.5, 0, 1, 1}), 1.0 / 3.0);
    EXPECT_DOUBLE_EQ(overlap({0, 0, 0.5, 0.5}, unit), 0.25);
    EXPECT_DOUBLE_EQ(overlap(unit, {1, 0, 1, 1}), 0.0);
    EXPECT_DOUBLE_EQ(overlap(unit, {0, 2, 1, 1}), 0.0);
}

// Four pictures: a hit, a miss, a false hit and one without a verdict.
struct EvaluationReportTest : testing::Test {
    const std::vector<LabelledPicture> pictures{{"a", "a", "passport-scan", {}},
                                                {"b", "b", "passport-scan", {}},
                                                {"c", "c", "other-id", {}},
                                                {"d", "d", "other-id", {}}};
    Measurement complete{{Recognizer::ppocr, ValidationEffort::complete},
                         {{true, 0.5, 10, 4, {}, {}},
                          {false, 0.4, 20, 3, {}, {}},
                          {true, 0.5, 30, 3, {}, {}},
                          {false, 0, 0, 0, {}, "truncated"}},
                         100};
};

TEST_F(EvaluationReportTest, CountsHitsByKindAndLeavesFailuresOut) {
    const Summary summary = summarize(pictures, complete);
    EXPECT_EQ(summary.kinds.at("passport-scan").called, 1u);
    EXPECT_EQ(summary.kinds.at("passport-scan").judged, 2u);
    EXPECT_EQ(summary.kinds.at("other-id").called, 1u);
    EXPECT_EQ(summary.kinds.at("other-id").judged, 1u);
    EXPECT_EQ(summary.failed, 1u);
    EXPECT_EQ(summary.medianDelay, 20.0);
    EXPECT_EQ(summary.delayAt90, 30.0);
}

TEST_F(EvaluationReportTest, SaysWhereEffortsDisagree) {
    Measurement verdict = complete;
    verdict.combination.effort = ValidationEffort::verdictOnly;
    EXPECT_TRUE(disagreements(pictures, {complete, verdict}).empty());

    verdict.rows[1].confidence = 0.39;
    verdict.rows[2].isPassport = false;
    const auto found = disagreements(pictures, {complete, verdict});
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].name, "b");
    EXPECT_EQ(found[1].name, "c");

    const Evaluation evaluation{
        "m.tsv", pictures, {complete, verdict}, overlapSummary(pictures, complete.rows), found};
    EXPECT_NE(reportAsTable(evaluation).find("DISAGREE"), std::string::npos);
}

}  // namespace
}  // namespace kestrelid::evaluation
