// Plays a file and draws it: main.cpp [FILE] [--silent] [--frames N]. The device plays one chain of the file,
// the oscilloscope draws another, and the clock of the device says when the next picture is due.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vorlund/All.h>
using namespace vorlund;

constexpr float kFrameRate = 25;

struct TOptions {
    std::string file = "strings.wav";
    bool isSilent = false;
    int frames = -1; // all
};

CRefPtr<IInputStream> OpenSound(const std::string& path) {
    const CInputStreamSelector file(PathFromUtf8(path.c_str()).c_str());
    return CRefPtr<IInputStream>::Adopt(file.DecodeStream(TDataFormat_AudioPcm::FormatId));
}

/// The device of the system; the one that plays to nowhere, at the pace of a clock, when there is none.
CRefPtr<IAudioOutput> OpenOutput(const TDataFormat_AudioPcm& format, bool isSilent) {
    try {
        if (!isSilent) {
            auto output = CRefPtr<IAudioOutput>::Adopt(
                CreateAs<IAudioSystem>(kAudioSystemClassId)->CreateOutput(nullptr));
            output->OpenOutput(format, kDefaultAudioLatency);
            return output;
        }
    } catch (const CException& error) {
        error.PrintMessage(DEBUG_MESSAGE_STDERR);
    }
    auto output = CRefPtr<IAudioOutput>::Adopt(CreateNullAudioOutput());
    output->OpenOutput(format, kDefaultAudioLatency);
    return output;
}

/// A window for the pictures; without a plug-in that shows windows, or without a display, there is none.
CRefPtr<IVideoOutput> OpenWindow(const TDataFormat_VideoRgb& format) {
    try {
        const auto device = CRefPtr<IObject>::Adopt(v.GetDeviceClassStore().CreateDevice(DEVICE_TYPE_VIDEO));
        auto window = device.Query<IVideoOutput>();
        if (window && window->Open(format, VRL_L("Play and draw"))) return window;
    } catch (const CClassNotFoundException&) {
        // No device of that type: the store was left locked.
        v.GiveBackLocks();
    }
    return {};
}

void PlayAndDraw(const TOptions& options) {
    const auto pictures = CreateAs<IAudioPictures>(classid::CAudioPictures);
    TAudioPictureSettings settings;
    settings.kind = AUDIO_PICTURE_OSCILLOSCOPE;
    settings.width = 640;
    settings.height = 360;
    settings.frameRate = kFrameRate;
    pictures->SetSettings(settings);
    pictures->Connect(OpenSound(options.file).Get());
    const auto& format = static_cast<const TDataFormat_VideoRgb&>(pictures->GetFormat());
    std::vector<std::uint32_t> picture(format.image.GetSizeInPixels());
    const CRefPtr<IVideoOutput> window = OpenWindow(format);

    const CRefPtr<IInputStream> sound = OpenSound(options.file);
    const CRefPtr<IAudioOutput> output =
        OpenOutput(*FormatCast<TDataFormat_AudioPcm>(sound->GetFormat()), options.isSilent);
    const CMediaClock clock(output.Get());
    // Nobody touches the stream from here on until the output has closed.
    output->Play(sound.Get());
    int drawn = 0;
    bool isOpen = true;
    while (isOpen && drawn != options.frames && ReadValues(*pictures.Get(), picture) == picture.size()) {
        const double due = drawn++ / double{kFrameRate};
        // The last pictures come at once when the sound has been read to its end. A device that is lost never
        // says that.
        while (clock.GetTime() < due && output->GetState() == AUDIO_STATE_RUNNING &&
               !WaitFor(output->GetIdleEvent(),
                        std::chrono::duration<double>(std::min(clock.GetWait(due), 0.1)))) {
        }
        if (window) isOpen = window->Present(picture.data());
    }
    output->Close();
    std::printf("%d pictures of %u x %u\n", drawn, settings.width, settings.height);
}

int main(int argc, char** argv) {
    try {
        const CSession session;
        TOptions options;
        const std::vector<std::string> words = GetUtf8Arguments(argc, argv);
        for (std::size_t i = 0; i < words.size(); ++i) {
            if (words[i] == "--silent")
                options.isSilent = true;
            else if (words[i] == "--frames" && i + 1 < words.size())
                options.frames = std::stoi(words[++i]);
            else
                options.file = words[i];
        }
        PlayAndDraw(options);
        return 0;
    } catch (const CException& error) {
        error.PrintMessage(DEBUG_MESSAGE_STDERR);
        return 1;
    }
}
