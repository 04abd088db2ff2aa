#pragma once

#include <cstddef>
#include <vector>

namespace marigold::bitmap {

// Resampled rows kept while the output moves down, so each source row is resampled across
// once per thread.
class RowWindow {
public:
    RowWindow(int slots, size_t rowLength)
        : _rows(size_t(slots) * rowLength), _held(slots, -1), _rowLength(rowLength) {}

    template <class Make>
    const float* row(int y, Make make) {
        const size_t slot = size_t(y) % _held.size();
        float* data = _rows.data() + slot * _rowLength;
        if (_held[slot] != y) {
            make(y, data);
            _held[slot] = y;
        }
        return data;
    }

private:
    std::vector<float> _rows;
    std::vector<int> _held;
    size_t _rowLength;
};

}  // namespace marigold::bitmap
