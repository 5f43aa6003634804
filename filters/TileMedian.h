#pragma once

#include "baselib/Buffer.h"
#include "filters/MergeNetwork.h"
#include "library/K7Image.h"

#include <type_traits>
#include <vector>

namespace k7 {

/// The networks by which a tile of pixels finds its medians. All windows of the tile share a core, whose
/// sorted values lose those that are too high or too low for every window. The tile is halved again and
/// again; each half takes in the columns (or rows) that only its own windows share, until one pixel and one
/// rank are left (Sugy, Hierarchical tiling for fast median filters, 2025; after Adams, Fast median filters
/// using separable sorting networks, ACM TOG 40(4), 2021).
struct TileNetworks {
    /// What a tile does at a halving along `axis` (0: columns).
    struct Halving {
        int axis;
        int tile[2];       ///< before it, in pixels
        MergeNetwork join; ///< the candidates, and the lines taken in
        MergeNetwork grow; ///< a line across, and where the lines taken in meet it
    };

    /// What windows need that the border cuts.
    static constexpr int kBorderSlack = 1;

    /// `slack`: how many ranks below and above the median's are found with it.
    TileNetworks(int width, int height, int slack);

    int Core(int axis, int tileSize) const { return window[axis] - tileSize + 1; }

    int window[2];
    int tile[2]; ///< the largest, from which halving starts
    MergeNetwork column;
    MergeNetwork row;
    MergeNetwork root;
    std::vector<Halving> halvings;
    int middle; ///< where the last results hold the median of a whole window
};

/// Medians of windows of any shape, by comparators only: the work a pixel grows a little faster than the
/// window's side and does not depend on the picture. One object for each thread.
template <class Sample>
class TileMedian {
public:
    /// Windows of more pixels a side take less time by a histogram.
    static constexpr int kMostSide = SampleTraits<Sample>::kWords ? 96 : 48;

    /// Windows lie as Clean's do. The networks serve windows that lie wholly on the picture, and those that
    /// its border cuts.
    TileMedian(const PictureK7<Sample>& image, const TileNetworks& whole, const TileNetworks& cut);
    /// False: allocation failed.
    explicit operator bool() const;

    /// Writes the medians of a range of rows.
    void FilterRows(int first, int last, const PictureK7<Sample>& out);

private:
    /// What is compared: integers with the order of the samples.
    using Key = std::conditional_t<SampleTraits<Sample>::kWords, std::int16_t, std::int32_t>;
    static constexpr int kLanes = kWireBytes / static_cast<int>(sizeof(Key));
    static constexpr int kTiles =
        kLanes / PictureK7<Sample>::Channels; ///< neighbours, side by side in a wire

    /// Sorted lines outside of the core, each within the core's breadth: those before and those behind it.
    struct Lines {
        const Key* before;
        const Key* after;
    };
    /// A part of a tile.
    struct Node {
        int at[2]; ///< its first pixel in the tile
        const Key* candidates;
        Lines lines[2]; ///< columns and rows
    };

    void FillPlanes();
    void SortColumns();
    void FilterGroup();
    Lines KeepColumns();
    Lines KeepRows();
    void Descend(std::size_t depth, const Node& node);
    void WritePixels(const Node& node);
    int RankFromMiddle(int x, int y) const;

    const Key* At(int column, int row) const;
    const Key* SortedAt(int column, int rank) const;
    void AddSource(const Key* wire) { from_[static_cast<std::size_t>(sources_++)] = wire; }
    void AddLines(const Key* keys, int wires);
    void Run(const MergeNetwork& network);
    const Key* Keep(const MergeNetwork& network);

    const PictureK7<Sample>& image_;
    const TileNetworks& whole_;
    const TileNetworks& cut_;
    int tile_[2];
    int groups_;         ///< of kTiles tiles in a row
    std::size_t room_;   ///< keys of a row of a plane
    Buffer<Key> planes_; ///< by row of the windows and place of a column in its tile: that place of each tile
    Buffer<Key> columns_; ///< the same for the core's columns, sorted
    Buffer<Key> wires_;
    Buffer<Key> kept_; ///< what the nodes on the way down hold
    Buffer<const Key*> from_;
    Buffer<Key*> to_;
    int sources_ = 0;
    Key* free_ = nullptr; ///< where the next node goes in kept_

    // What is in progress.
    const TileNetworks* networks_ = nullptr;
    int group_ = 0;
    int row_ = 0;  ///< the lowest of the tiles
    int last_ = 0; ///< the last that is asked for
    const PictureK7<Sample>* out_ = nullptr;
};

} // namespace k7
