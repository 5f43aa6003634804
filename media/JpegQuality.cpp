#include "media/JpegQuality.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <vector>

namespace media {
namespace {

/// The sum of the table for brightness in Annex K.1 of ITU-T T.81, which corresponds to quality 50.
constexpr int kSumAt50 = 3688;
constexpr int kTableEntries = 64;

int ReadByte(std::istream& file) {
    const int byte = file.get();
    return file ? byte : 0;
}
int ReadPair(std::istream& file) {
    const int high = ReadByte(file);
    return high << 8 | ReadByte(file);
}

/// The sum of table 0 in a segment of tables; 0 if it is not among them.
int SumOfFirstTable(std::istream& file, int length) {
    while (length > kTableEntries && file) {
        const int head = ReadByte(file), bytes = head >> 4 ? 2 : 1;
        int sum = 0;
        for (int i = 0; i < kTableEntries; ++i) sum += bytes == 2 ? ReadPair(file) : ReadByte(file);
        if ((head & 15) == 0) return file ? sum : 0;
        length -= 1 + bytes * kTableEntries;
    }
    return 0;
}

int SumOfTable(std::istream& file) {
    constexpr int startOfImage = 0xffd8, tables = 0xffdb, startOfScan = 0xffda;
    if (ReadPair(file) != startOfImage) return 0;
    while (file) {
        const int marker = ReadPair(file), length = ReadPair(file) - 2;
        if (marker == startOfScan || length < 0) return 0;
        if (marker == tables) return SumOfFirstTable(file, length);
        file.seekg(length, std::ios::cur);
    }
    return 0;
}

} // namespace

int JpegQuality(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const int sum = SumOfTable(file);
    if (sum == 0) return 0;
    // Entries are scaled by 50 / quality below 50, and by 2 - quality / 50 from there on.
    const double scale = static_cast<double>(sum) / kSumAt50;
    const double quality = scale > 1.0 ? 50.0 / scale : 100.0 - 50.0 * scale;
    return std::clamp(static_cast<int>(quality + 0.5), 1, 100);
}

} // namespace media
