// The command "window": the plasma generator, live, or a file, through the first video device.
#include "Commands.h"
#include "Diagnostics.h"
#include "FramePacer.h"
#include "Interrupt.h"
#include "Media.h"
#include "VideoDevice.h"

#include "../../plugins/support/PixelForm.h"

#include <vorlund/ClassIds.h>
#include <vorlund/DataFormat.h>
#include <vorlund/DecoderSupport.h>
#include <vorlund/Path.h>
#include <vorlund/PlasmaVideoGenerator.h>
#include <vorlund/RefPtr.h>
#include <vorlund/WindowedOutput.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

using namespace vorlund;

namespace {

struct TShow {
    std::uint64_t shown = 0;
    std::uint64_t dropped = 0;
    /// From the first frame to the last.
    double seconds = 0;

    double GetRate() const { return shown > 1 && seconds > 0 ? static_cast<double>(shown - 1) / seconds : 0; }
};

/// What is shown: `read` delivers the frame of a number, or returns false when there is none.
struct TShowing {
    TDataFormat_VideoRgb format;
    wstring title;
    std::function<bool(std::uint64_t number, std::uint8_t* frame)> read;
};

/// How often a picture is drawn anew, and the keys are looked at.
constexpr float kPictureRate = 10;

/// Whether the user has pressed Escape in the window of a device.
class CEscape {
public:
    explicit CEscape(IVideoOutput& output)
        : output_(CRefPtr<IVideoOutput>::Share(&output).Query<IWindowedOutput>()) {
        if (output_) output_->SetHandler(&OnEvent, this);
    }
    CEscape(const CEscape&) = delete;
    CEscape& operator=(const CEscape&) = delete;
    ~CEscape() {
        if (output_) output_->SetHandler(nullptr);
    }

    bool IsPressed() const { return isPressed_; }

private:
    static void OnEvent(const TWindowEvent& event, void* user) {
        if (event.type == WINDOW_EVENT_KEY_PRESSED && event.key == WINDOW_KEY_ESCAPE)
            static_cast<CEscape*>(user)->isPressed_ = true;
    }

    std::atomic<bool> isPressed_ = false;
    CRefPtr<IWindowedOutput> output_;
};

/// Until `frames` have been shown, there are no more, the window is closed, Escape is pressed, or the program
/// is interrupted.
TShow Show(const TShowing& showing, IVideoOutput& output, const CEscape& escape, std::uint64_t frames) {
    const CInterrupt interrupt;
    std::vector<std::uint8_t> frame(showing.format.image.GetSizeInBytes());
    const auto start = CFramePacer::TClock::now();
    CFramePacer pacer(showing.format.frameRate, start);
    TShow show;
    while (!interrupt.IsRaised() && !escape.IsPressed()) {
        if (!showing.read(show.shown + pacer.GetDropped(), frame.data())) break;
        if (!output.Present(frame.data())) break;
        ++show.shown;
        const auto now = CFramePacer::TClock::now();
        show.seconds = std::chrono::duration<double>(now - start).count();
        if (show.shown == frames) break;
        std::this_thread::sleep_until(pacer.Next(now));
    }
    show.dropped = pacer.GetDropped();
    return show;
}

TShowing ShowPlasma(const TVideoSize& size) {
    const auto plasma = CreateAs<IPlasmaVideoGenerator>(classid::CPlasmaVideoGenerator);
    auto format = static_cast<const TDataFormat_VideoRgb&>(plasma->GetFormat());
    format.image.width = size.width;
    format.image.height = size.height;
    plasma->SetFormat(&format);
    return {format, VRL_L("Plasma"), [plasma, size = format.image.GetSizeInBytes()](auto, auto* frame) {
                plasma->Read(frame, size);
                return true;
            }};
}

TShowing ShowPicture(const TShownPicture& picture, const wstring& title) {
    TShowing showing{{}, title, [pixels = picture.pixels](auto, auto* frame) {
                         std::memcpy(frame, pixels.data(), pixels.size() * sizeof pixels[0]);
                         return true;
                     }};
    showing.format.image.pixelFormat = kPixelForm;
    showing.format.frameRate = kPictureRate;
    showing.format.image.width = picture.width;
    showing.format.image.height = picture.height;
    return showing;
}

TShowing ShowVideo(const CRefPtr<IInputStream>& stream, const wstring& title) {
    const auto& format = static_cast<const TDataFormat_VideoRgb&>(stream->GetFormat());
    return {format, title, [stream, size = format.image.GetSizeInBytes()](auto number, auto* frame) {
                // Frames that are dropped are passed over.
                stream->Seek(static_cast<std::int64_t>(number * size));
                return ReadWhole(*stream, frame, size);
            }};
}

TShow ShowInWindow(const TShowing& showing, std::uint64_t frames) {
    const auto output = MakeVideoOutput();
    // Before there is a window, so that no key is missed.
    const CEscape escape(*output.Get());
    OpenVideoOutput(*output, showing.format, showing.title);
    const TShow show = Show(showing, *output, escape, frames);
    output->Close();
    return show;
}

std::string FormatSize(const TDataFormat_ImageRgb& image) {
    return std::to_string(image.width) + " x " + std::to_string(image.height);
}

std::string FormatRate(double rate) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f per second", rate);
    return text;
}

void ReportVideo(const TDataFormat_VideoRgb& format, const TShow& show, CDiagnostics& diagnostics) {
    diagnostics.PrintField("Size", FormatSize(format.image));
    diagnostics.PrintField("Frames", std::to_string(show.shown));
    diagnostics.PrintField("Dropped", std::to_string(show.dropped));
    diagnostics.PrintField("Rate", FormatRate(show.GetRate()));
    diagnostics.PrintField("Nominal", FormatRate(static_cast<double>(format.frameRate)));
}

void ShowFile(const TWindowOptions& options, CDiagnostics& diagnostics) {
    const wstring path = PathFromUtf8(options.input.c_str());
    const auto stream = OpenMedia(path);
    const wstring title = path.substr(path.find_last_of(VRL_L("/\\")) + 1);
    if (stream->GetFormat().id == TDataFormat_VideoRgb::FormatId) {
        const TShowing showing = ShowVideo(stream, title);
        const TShow show = ShowInWindow(showing, options.frames);
        diagnostics.PrintField("File", path);
        return ReportVideo(showing.format, show, diagnostics);
    }
    const auto image = static_cast<const TDataFormat_ImageRgb&>(stream->GetFormat());
    const TShowing showing = ShowPicture(ReadPicture(*stream), title);
    ShowInWindow(showing, options.frames);
    diagnostics.PrintField("File", path);
    diagnostics.PrintField("Size", FormatSize(image));
    if (showing.format.image.width != image.width)
        diagnostics.PrintField("Shown", FormatSize(showing.format.image));
}

} // namespace

void RunWindow(const TWindowOptions& options, CDiagnostics& diagnostics) {
    if (!options.input.empty()) return ShowFile(options, diagnostics);
    const TShowing showing = ShowPlasma(options.size);
    const TShow show = ShowInWindow(showing, options.frames);
    ReportVideo(showing.format, show, diagnostics);
}
