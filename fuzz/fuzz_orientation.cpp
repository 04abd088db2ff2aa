#include "FuzzBodies.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    marigold::fuzz::readAndWriteOrientation({data, size});
    return 0;
}
