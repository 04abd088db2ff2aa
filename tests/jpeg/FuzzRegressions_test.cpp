#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>

#include "../../fuzz/FuzzBodies.h"
#include "support/ToolsAndFiles.h"

namespace marigold {
namespace {

namespace fs = std::filesystem;

using Body = void (*)(std::span<const std::uint8_t>);

struct Input {
    std::string target;
    Body body;
    fs::path path;
};

std::vector<Input> savedInputs() {
    const std::pair<const char*, Body> targets[] = {
        {"sections_exif", fuzz::readSectionsForExif},
        {"sections_image", fuzz::readSectionsWithImage},
        {"exif_block", fuzz::parseExifBlock},
        {"orientation", fuzz::readAndWriteOrientation},
        {"transplant", fuzz::transplantExif},
    };
    std::vector<Input> inputs;
    for (const auto& [name, body] : targets) {
        std::error_code error;
        const fs::path folder = fs::path(FUZZ_REGRESSIONS_DIR) / name;
        for (const auto& file : fs::directory_iterator(folder, error)) {
            if (file.is_regular_file() && file.path().filename().string()[0] != '.') {
                inputs.push_back({name, body, file.path()});
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
    GetParam().body(bytes);
}

INSTANTIATE_TEST_SUITE_P(Saved, FuzzRegression, testing::ValuesIn(savedInputs()),
                         [](const testing::TestParamInfo<Input>& info) {
                             std::string name =
                                 info.param.target + "_" + info.param.path.filename().string();
                             for (char& c : name) {
                                 if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
                             }
                             return name;
                         });

}  // namespace
}  // namespace marigold
