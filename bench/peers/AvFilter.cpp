#include "bench/peers/PeerFilters.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/frame.h>
#include <libavutil/pixfmt.h>
}

#include <memory>
#include <random>
#include <stdexcept>

namespace k7::bench {
namespace {

void Check(int result, const char* what) {
    if (result < 0) throw std::runtime_error(std::string("ffmpeg: ") + what);
}

struct FreeFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
using Frame = std::unique_ptr<AVFrame, FreeFrame>;

/// Planar, as these filters want their pictures.
class Graph {
public:
    Graph(const std::string& filter, int width, int height, int threads) {
        graph_->nb_threads = threads;
        const std::string picture = "video_size=" + std::to_string(width) + "x" + std::to_string(height) +
                                    ":pix_fmt=" + std::to_string(AV_PIX_FMT_GBRAP16) +
                                    ":time_base=1/25:pixel_aspect=1/1";
        Check(avfilter_graph_create_filter(&source_, avfilter_get_by_name("buffer"), "in", picture.c_str(),
                                           nullptr, graph_.get()),
              "no source");
        Check(avfilter_graph_create_filter(&sink_, avfilter_get_by_name("buffersink"), "out", nullptr,
                                           nullptr, graph_.get()),
              "no sink");
        AVFilterInOut* outputs = InOut("in", source_);
        AVFilterInOut* inputs = InOut("out", sink_);
        Check(avfilter_graph_parse_ptr(graph_.get(), filter.c_str(), &inputs, &outputs, nullptr),
              "bad filter");
        avfilter_inout_free(&inputs);
        avfilter_inout_free(&outputs);
        Check(avfilter_graph_config(graph_.get(), nullptr), "bad graph");

        noise_->format = AV_PIX_FMT_GBRAP16;
        noise_->width = width;
        noise_->height = height;
        Check(av_frame_get_buffer(noise_.get(), 0), "no memory");
        std::minstd_rand random;
        for (int plane = 0; plane < 4; ++plane)
            for (int i = 0; i < noise_->linesize[plane] / 2 * height; ++i)
                reinterpret_cast<std::uint16_t*>(noise_->data[plane])[i] =
                    static_cast<std::uint16_t>(random());
    }

    void Run() {
        noise_->pts = time_++;
        Check(av_buffersrc_add_frame_flags(source_, noise_.get(), AV_BUFFERSRC_FLAG_KEEP_REF),
              "frame refused");
        const Frame done(av_frame_alloc());
        Check(av_buffersink_get_frame(sink_, done.get()), "no frame");
    }

private:
    static AVFilterInOut* InOut(const char* name, AVFilterContext* filter) {
        AVFilterInOut* link = avfilter_inout_alloc();
        link->name = av_strdup(name);
        link->filter_ctx = filter;
        return link;
    }

    struct FreeGraph {
        void operator()(AVFilterGraph* graph) const { avfilter_graph_free(&graph); }
    };
    std::unique_ptr<AVFilterGraph, FreeGraph> graph_{avfilter_graph_alloc()};
    AVFilterContext* source_ = nullptr;
    AVFilterContext* sink_ = nullptr;
    Frame noise_{av_frame_alloc()};
    std::int64_t time_ = 0;
};

} // namespace

std::function<void()> AvFilterFrame(const std::string& filter, int width, int height, int threads) {
    return [graph = std::make_shared<Graph>(filter, width, height, threads)] { graph->Run(); };
}

} // namespace k7::bench
