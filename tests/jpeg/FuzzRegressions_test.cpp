#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>

#include "../../fuzz/FuzzBodies.h"
#include "jpeg/JpegTestFiles.h"

namespace marigold {
namespace {

namespace fs = std::filesystem;

struct Target {
    const char* name;
    void (*body)(std::span<const std::uint8_t>);
};

constexpr Target kTargets[] = {
    {"sections_exif", fuzz::readSectionsForExif},
    {"sections_image", fuzz::readSectionsWithImage},
    {"exif_block", fuzz::parseExifBlock},
    {"orientation", fuzz::readAndWriteOrientation},
    {"transplant", fuzz::transplantExif},
};

struct Input {
    const Target* target;
    fs::path path;
};

std::vector<Input> savedInputs() {
    std::vector<Input> inputs;
    for (const Target& target : kTargets) {
        const fs::path folder = fs::path(FUZZ_REGRESSIONS_DIR) / target.name;
        std::error_code error;
        for (const fs::directory_entry& file : fs::directory_iterator(folder, error)) {
            if (file.is_regular_file() && file.path().filename().string()[0] != '.') {
                inputs.push_back({&target, file.path()});
            }
        }
    }
    return inputs;
}

class FuzzRegression : public testing::TestWithParam<Input> {};

// Each saved input goes through the same code as its fuzz target: a crash or a hang fails
// the test. `make fuzz` replays the same folder under the sanitizers.
TEST_P(FuzzRegression, RunsToTheEnd) {
    const test::Bytes bytes = test::readBytes(GetParam().path.string());
    ASSERT_FALSE(bytes.empty()) << GetParam().path;
    GetParam().target->body(bytes);
}

INSTANTIATE_TEST_SUITE_P(Saved, FuzzRegression, testing::ValuesIn(savedInputs()),
                         [](const testing::TestParamInfo<Input>& info) {
                             std::string name = std::string(info.param.target->name) + "_" +
                                                info.param.path.filename().string();
                             for (char& c : name) {
                                 if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
                             }
                             return name;
                         });

}  // namespace
}  // namespace marigold
