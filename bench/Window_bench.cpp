// Frames of 640 x 480 pixels on the screen, through the plug-in window-output, against the window system's
// own call. Needs a display.
#include "BenchSupport.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/Path.h>
#include <vorlund/RefPtr.h>
#include <vorlund/VideoOutput.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#ifdef VORLUND_BENCH_XCB
#include <cstdlib>
#include <xcb/xcb.h>
#endif

using namespace vorlund;

namespace {

constexpr std::uint32_t kWidth = 640;
constexpr std::uint32_t kHeight = 480;

std::vector<std::uint32_t> MakeFrame() {
    std::vector<std::uint32_t> frame(kWidth * kHeight);
    for (std::size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<std::uint32_t>(i * 2654435761u);
    return frame;
}

void Present(benchmark::State& state) {
    const bench::CLibrary library;
    CPluginStore plugins;
    plugins.AddPluginPath(PathFromUtf8(VORLUND_BENCH_PLUGIN_PATH).c_str());
    plugins.LoadPlugin(VRL_L("window-output"));
    {
        const auto output = CreateAs<IVideoOutput>(classid::CVideoDevice);
        TDataFormat_VideoRgb format;
        format.SetDefaults();
        format.image.pixelFormat = {0, 32, 8, 24, 8, 16, 8, 8, 8, 0};
        const auto frame = MakeFrame();
        if (!output->Open(format, VRL_L("Benchmark"))) {
            state.SkipWithError("no display");
        } else {
            for (auto _ : state) benchmark::DoNotOptimize(output->Present(frame.data()));
        }
        state.SetItemsProcessed(state.iterations());
    }
    plugins.Close();
}
BENCHMARK(Present)->Name("frame of 640 x 480/vorlund")->UseRealTime();

#ifdef VORLUND_BENCH_XCB
/// A window of its own, one image a frame and an answer after each, as ours waits for one.
void PutImage(benchmark::State& state) {
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection)) {
        state.SkipWithError("no display");
        xcb_disconnect(connection);
        return;
    }
    const xcb_screen_t* const screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    const xcb_window_t window = xcb_generate_id(connection);
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, kWidth, kHeight, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, 0, nullptr);
    xcb_map_window(connection, window);
    const xcb_gcontext_t context = xcb_generate_id(connection);
    xcb_create_gc(connection, context, window, 0, nullptr);
    const auto frame = MakeFrame();
    for (auto _ : state) {
        xcb_put_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, window, context, kWidth, kHeight, 0, 0, 0,
                      screen->root_depth, kWidth * kHeight * 4,
                      reinterpret_cast<const std::uint8_t*>(frame.data()));
        std::free(xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window), nullptr));
    }
    state.SetItemsProcessed(state.iterations());
    xcb_disconnect(connection);
}
BENCHMARK(PutImage)->Name("frame of 640 x 480/xcb_put_image")->UseRealTime();
#endif

} // namespace

BENCHMARK_MAIN();
