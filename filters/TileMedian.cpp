#include "filters/TileMedian.h"

#include "library/Chunks.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

namespace k7 {

namespace {

constexpr const char* kSource = "Clean";
constexpr int kChannels = K7Image::Channels;
constexpr int kMostTile = 16;

std::int16_t KeyOf(u16 word) {
    return static_cast<std::int16_t>(word ^ 0x8000);
}
u16 SampleOf(std::int16_t key) {
    return static_cast<u16>(key ^ 0x8000);
}
/// Of a negative float all bits but the sign are inverted.
std::int32_t KeyOf(float value) {
    const auto bits = std::bit_cast<std::int32_t>(value);
    return bits ^ (bits >> 31 & 0x7fffffff);
}
float SampleOf(std::int32_t key) {
    return std::bit_cast<float>(key ^ (key >> 31 & 0x7fffffff));
}

/// Largest power of two of which two fit the window.
int TileSize(int window) {
    return std::min(static_cast<int>(std::bit_floor(static_cast<unsigned>(window + 1) / 2)), kMostTile);
}

/// Of a sorted core of `core` values, the first rank that can be a window's rank `least`, when `more` values
/// come; and how many there are up to a window's rank `most`.
struct Kept {
    Kept(int core, int more, int least, int most)
        : first(std::max(0, least - more))
        , count(std::min(core, most + 1) - first) {}
    int first, count;
};

/// Beyond the border lowest and highest keys stand in turn, like the squares of a chessboard.
constexpr bool IsLow(int x, int y) {
    return ((x + y) & 1) == 0;
}

/// The lowest of them in a rectangle.
int CountLow(int x, int y, int width, int height) {
    const int squares = width * height;
    return squares / 2 + (squares % 2 == 1 && IsLow(x, y) ? 1 : 0);
}

/// The lengths of a run and of `count` others.
std::vector<int> Runs(int first, int count, int length) {
    std::vector<int> runs(static_cast<std::size_t>(count) + 1, length);
    runs.front() = first;
    return runs;
}

} // namespace

TileNetworks::TileNetworks(int width, int height, int slack)
    : window{width, height}
    , tile{TileSize(width), TileSize(height)}
    , column(MergeNetwork::Sort(Core(1, tile[1])))
    , row(MergeNetwork::Sort(Core(0, tile[0]))) {
    const int all = width * height;
    int size[2] = {tile[0], tile[1]};
    int core = Core(0, size[0]) * Core(1, size[1]);
    const auto keptOf = [&](int values) {
        return Kept(values, all - values, all / 2 - slack, all / 2 + slack);
    };
    Kept kept = keptOf(core);
    const int length = Core(1, size[1]);
    root = MergeNetwork(Runs(length, Core(0, size[0]) - 1, length), kept.first, kept.count);
    while (size[0] > 1 || size[1] > 1) {
        const int axis = size[0] >= size[1] ? 0 : 1;
        const int half = size[axis] / 2;
        const int breadth = Core(1 - axis, size[1 - axis]);
        core += half * breadth;
        const Kept next = keptOf(core);
        halvings.push_back(
            {axis,
             {size[0], size[1]},
             MergeNetwork(Runs(kept.count, half, breadth), next.first - kept.first, next.count),
             MergeNetwork(Runs(Core(axis, size[axis]), half, 1), 0, Core(axis, half))});
        size[axis] = half;
        kept = next;
    }
    middle = all / 2 - kept.first;
}

namespace {

/// Keys that a thread keeps for the nodes from the tile down to a pixel, in wires, and the most that a
/// network has.
struct Demand {
    explicit Demand(const TileNetworks& networks) {
        const int* tile = networks.tile;
        const int core[2] = {networks.Core(0, tile[0]), networks.Core(1, tile[1])};
        kept = networks.root.Results() + 2 * (tile[0] - 1) * core[1] + 2 * (tile[1] - 1) * core[0];
        wires = std::max({networks.root.Inputs(), core[0], core[1]});
        for (const TileNetworks::Halving& halving : networks.halvings) {
            kept +=
                halving.join.Results() + 2 * (halving.tile[1 - halving.axis] - 1) * halving.grow.Results();
            wires = std::max({wires, halving.join.Inputs(), halving.grow.Inputs()});
        }
    }
    int kept, wires;
};

} // namespace

template <class Sample>
TileMedian<Sample>::TileMedian(const PictureK7<Sample>& image, const TileNetworks& whole,
                               const TileNetworks& cut)
    : image_(image)
    , whole_(whole)
    , cut_(cut)
    , tile_{whole.tile[0], whole.tile[1]} {
    const int perGroup = kTiles * tile_[0];
    groups_ = (image.Width + perGroup - 1) / perGroup;
    const int beyond = (whole.window[0] + tile_[0] - 2) / tile_[0]; // tiles that the last one sees
    const int tiles = (groups_ + (beyond + kTiles - 1) / kTiles) * kTiles;
    room_ = static_cast<std::size_t>(tiles) * kChannels;
    const auto rows = static_cast<std::size_t>((whole.window[1] + tile_[1] - 1) * tile_[0]);
    planes_ = Buffer<Key>(rows * room_, kSource);
    columns_ = Buffer<Key>(static_cast<std::size_t>(whole.column.Inputs() * tile_[0]) * room_, kSource);
    const Demand demand(cut); // needs more than the other
    wires_ = Buffer<Key>(static_cast<std::size_t>(demand.wires * kLanes) + kToCacheLine<Key>, kSource);
    kept_ = Buffer<Key>(static_cast<std::size_t>(demand.kept * kLanes) + kToCacheLine<Key>, kSource);
    from_ = Buffer<const Key*>(static_cast<std::size_t>(demand.wires), kSource);
    to_ = Buffer<Key*>(static_cast<std::size_t>(demand.wires), kSource);
}

template <class Sample>
TileMedian<Sample>::operator bool() const {
    return planes_ && columns_ && wires_ && kept_ && from_ && to_;
}

/// The key of the group's first tile in a column and a row of the tile's windows.
template <class Sample>
auto TileMedian<Sample>::At(int column, int row) const -> const Key* {
    return planes_.data() + static_cast<std::size_t>(row * tile_[0] + column % tile_[0]) * room_ +
           (column / tile_[0] + group_ * kTiles) * kChannels;
}

/// The same in the core's columns.
template <class Sample>
auto TileMedian<Sample>::SortedAt(int column, int rank) const -> const Key* {
    const int row = column % tile_[0] * whole_.column.Inputs() + rank;
    return columns_.data() + static_cast<std::size_t>(row) * room_ +
           (column / tile_[0] + group_ * kTiles) * kChannels;
}

template <class Sample>
void TileMedian<Sample>::AddLines(const Key* keys, int wires) {
    for (int i = 0; i < wires; ++i) AddSource(keys + i * kLanes);
}

template <class Sample>
void TileMedian<Sample>::Run(const MergeNetwork& network) {
    if constexpr (SampleTraits<Sample>::kWords)
        kRunOnWords.Chosen()(network.List(), from_.data(), FromCacheLine(wires_), to_.data());
    else
        kRunOnFloats.Chosen()(network.List(), from_.data(), FromCacheLine(wires_), to_.data());
    sources_ = 0;
}

/// Runs a network on the sources; returns its results, contiguous, which are kept until free_ is put back.
template <class Sample>
auto TileMedian<Sample>::Keep(const MergeNetwork& network) -> const Key* {
    const Key* const kept = free_;
    for (int i = 0; i < network.Results(); ++i, free_ += kLanes) to_[static_cast<std::size_t>(i)] = free_;
    Run(network);
    return kept;
}

/// Deals out the rows that the tiles' windows see to planes.
template <class Sample>
void TileMedian<Sample>::FillPlanes() {
    using Limits = std::numeric_limits<Key>;
    const int left = whole_.window[0] / 2;
    const int low = row_ - whole_.window[1] / 2;
    const int tiles = static_cast<int>(room_) / kChannels;
    Key* to = planes_.data();
    for (int y = low; y < low + whole_.window[1] + tile_[1] - 1; ++y) {
        const Sample* const row = y >= 0 && y < image_.Height ? image_.Rows[y] : nullptr;
        for (int place = 0; place < tile_[0]; ++place)
            for (int x = place - left, end = x + tiles * tile_[0]; x < end; x += tile_[0], to += kChannels)
                if (row && x >= 0 && x < image_.Width)
                    for (int c = 0; c < kChannels; ++c) to[c] = KeyOf(row[x * kChannels + c]);
                else
                    std::fill_n(to, kChannels, IsLow(x, y) ? Limits::min() : Limits::max());
    }
}

template <class Sample>
void TileMedian<Sample>::SortColumns() {
    const int length = whole_.column.Inputs();
    for (int place = 0; place < tile_[0]; ++place)
        for (std::size_t at = 0; at < room_; at += kLanes) {
            for (int i = 0; i < length; ++i) {
                const auto row = static_cast<std::size_t>((tile_[1] - 1 + i) * tile_[0] + place);
                AddSource(planes_.data() + row * room_ + at);
                to_[static_cast<std::size_t>(i)] =
                    columns_.data() + static_cast<std::size_t>(place * length + i) * room_ + at;
            }
            Run(whole_.column);
        }
}

/// The columns that not all of the tile's windows share, as far as its rows are shared.
template <class Sample>
auto TileMedian<Sample>::KeepColumns() -> Lines {
    const int length = whole_.column.Inputs();
    const auto keep = [&](int first) {
        const Key* const kept = free_;
        for (int column = first; column < first + tile_[0] - 1; ++column)
            for (int i = 0; i < length; ++i, free_ += kLanes)
                std::memcpy(free_, SortedAt(column, i), kWireBytes);
        return kept;
    };
    const Key* const before = keep(0);
    return {before, keep(whole_.window[0])};
}

template <class Sample>
auto TileMedian<Sample>::KeepRows() -> Lines {
    const auto keep = [&](int first) {
        const Key* const kept = free_;
        for (int row = first; row < first + tile_[1] - 1; ++row) {
            for (int column = tile_[0] - 1; column < whole_.window[0]; ++column) AddSource(At(column, row));
            Keep(whole_.row);
        }
        return kept;
    };
    const Key* const before = keep(0);
    return {before, keep(whole_.window[1])};
}

/// Finds the medians of kTiles tiles, side by side.
template <class Sample>
void TileMedian<Sample>::FilterGroup() {
    const int* const window = whole_.window;
    const int left = group_ * kTiles * tile_[0] - window[0] / 2;
    const int low = row_ - window[1] / 2;
    const bool isWhole = left >= 0 && left + (kTiles * tile_[0] - 1) + window[0] <= image_.Width &&
                         low >= 0 && low + (tile_[1] - 1) + window[1] <= image_.Height;
    networks_ = isWhole ? &whole_ : &cut_;
    free_ = FromCacheLine(kept_);

    Node tile = {{0, 0}, nullptr, {KeepColumns(), KeepRows()}};
    for (int column = tile_[0] - 1; column < window[0]; ++column)
        for (int i = 0; i < whole_.column.Inputs(); ++i) AddSource(SortedAt(column, i));
    tile.candidates = Keep(networks_->root);
    Descend(0, tile);
}

template <class Sample>
void TileMedian<Sample>::Descend(std::size_t depth, const Node& node) {
    if (row_ + node.at[1] > last_) return;
    if (depth == networks_->halvings.size()) return WritePixels(node);

    const TileNetworks::Halving& halving = networks_->halvings[depth];
    const int axis = halving.axis;
    const int half = halving.tile[axis] / 2;
    const int breadth = networks_->Core(1 - axis, halving.tile[1 - axis]) * kLanes; // keys of a line
    const int length = networks_->Core(axis, halving.tile[axis]) * kLanes;          // of one across
    Key* const mark = free_;
    for (const bool second : {false, true}) {
        const Lines& lines = node.lines[axis];
        Node part = node;
        part.at[axis] += second ? half : 0;
        part.lines[axis] = {lines.before + (second ? half * breadth : 0),
                            lines.after + (second ? half * breadth : 0)};
        const Key* const taken = second ? lines.after : lines.before + (half - 1) * breadth;
        const int firstTaken = node.at[axis] + (second ? networks_->window[axis] : half - 1);

        AddLines(node.candidates, halving.join.Inputs() - half * breadth / kLanes);
        AddLines(taken, half * breadth / kLanes);
        part.candidates = Keep(halving.join);

        const int across = halving.tile[1 - axis] - 1; // lines on each side
        const auto grow = [&](const Key* line, int first) {
            const Key* const kept = free_;
            for (int i = 0; i < across; ++i, line += length) {
                AddLines(line, length / kLanes);
                for (int k = 0; k < half; ++k)
                    AddSource(axis == 0 ? At(firstTaken + k, first + i) : At(first + i, firstTaken + k));
                Keep(halving.grow);
            }
            return kept;
        };
        const Lines& crossing = node.lines[1 - axis];
        const Key* const before = grow(crossing.before, node.at[1 - axis]);
        part.lines[1 - axis] = {before,
                                grow(crossing.after, node.at[1 - axis] + networks_->window[1 - axis])};
        Descend(depth + 1, part);
        free_ = mark;
    }
}

/// How far the median's rank lies from the middle where the border cuts the window, with what stands beyond.
template <class Sample>
int TileMedian<Sample>::RankFromMiddle(int x, int y) const {
    const int width = whole_.window[0], height = whole_.window[1];
    const int left = x - width / 2, low = y - height / 2;
    const int insideLeft = std::max(left, 0), insideLow = std::max(low, 0);
    const int insideWidth = std::min(left + width, image_.Width) - insideLeft;
    const int insideHeight = std::min(low + height, image_.Height) - insideLow;
    const int lowest =
        CountLow(left, low, width, height) - CountLow(insideLeft, insideLow, insideWidth, insideHeight);
    return lowest + insideWidth * insideHeight / 2 - width * height / 2;
}

template <class Sample>
void TileMedian<Sample>::WritePixels(const Node& node) {
    const int y = row_ + node.at[1];
    for (int tile = 0; tile < kTiles; ++tile) {
        const int x = (group_ * kTiles + tile) * tile_[0] + node.at[0];
        if (x >= image_.Width) return;
        const int rank = networks_->middle + (networks_ == &cut_ ? RankFromMiddle(x, y) : 0);
        const Key* const key = node.candidates + rank * kLanes + tile * kChannels;
        Sample* const to = out_->Rows[y] + x * kChannels;
        for (int c = 0; c < kChannels; ++c) to[c] = SampleOf(key[c]);
    }
}

template <class Sample>
void TileMedian<Sample>::FilterRows(int first, int last, const PictureK7<Sample>& out) {
    last_ = last;
    out_ = &out;
    for (row_ = first; row_ <= last; row_ += tile_[1]) {
        FillPlanes();
        SortColumns();
        for (group_ = 0; group_ < groups_ && !AbortRequested(); ++group_) FilterGroup();
    }
}

template class TileMedian<u16>;
template class TileMedian<float>;

} // namespace k7
