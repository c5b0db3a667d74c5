// The command "devices".
#include "AudioDevice.h"
#include "JsonWriter.h"
#include "Listings.h"
#include "Table.h"

#include <vorlund/Exception.h>
#include <vorlund/Path.h>
#include <vorlund/Vorlund.h>

#include <iterator>
#include <utility>

using namespace vorlund;

namespace {

/// By the number of the direction; for scripts as well.
constexpr const wchar* kDirections[] = {VRL_L("output"), VRL_L("input"), VRL_L("loopback")};
static_assert(std::size(kDirections) == AUDIO_DIRECTION_LOOPBACK + 1);

/// What needs no sound system.
std::vector<TAudioDevice> ListOwnDevices() {
    const auto own = [](const char* id, const wchar* name, TAudioDirection direction) {
        return TAudioDevice{PathFromUtf8(id), name, direction, false, 0, 0};
    };
    return {
        own(kNullDevice, VRL_L("Plays in time, to nobody"), AUDIO_DIRECTION_OUTPUT),
        own(kFileDevice, VRL_L("Plays into a WAV file: file:OUT.wav"), AUDIO_DIRECTION_OUTPUT),
        own(kNullDevice, VRL_L("Records silence"), AUDIO_DIRECTION_INPUT),
    };
}

struct TDevices {
    wstring system;
    /// Why there are no devices of a system.
    wstring problem;
    std::vector<TAudioDevice> devices;
};

TDevices FindDevices() {
    TDevices found;
    TAudioSystem system = FindAudioSystem();
    found.problem = system.problem;
    if (!system.system) return found;
    found.system = system.system->GetName();
    try {
        for (const TAudioDirection direction :
             {AUDIO_DIRECTION_OUTPUT, AUDIO_DIRECTION_INPUT, AUDIO_DIRECTION_LOOPBACK}) {
            const std::vector<TAudioDevice> devices = ListDevices(*system.system, direction);
            found.devices.insert(found.devices.end(), devices.begin(), devices.end());
        }
    } catch (const CException& error) {
        found.problem = error.GetReason();
        v.GiveBackLocks();
    }
    return found;
}

/// Nothing for what is not known.
wstring FormatNumber(std::uint32_t number, const char* unit) {
    return number == 0 ? wstring() : PathFromUtf8((std::to_string(number) + unit).c_str());
}

void WriteDevice(CJsonWriter& json, const TAudioDevice& device, bool isOwn) {
    json.BeginObject().Key("id").Text(device.id.c_str()).Key("name").Text(device.name.c_str());
    json.Key("direction").Text(kDirections[device.direction]).Key("default").Flag(device.isDefault);
    json.Key("channels");
    device.channels > 0 ? json.Number(device.channels) : json.Null();
    json.Key("rate");
    device.samplesPerSec > 0 ? json.Number(device.samplesPerSec) : json.Null();
    json.Key("builtIn").Flag(isOwn).EndObject();
}

void PrintDevicesAsJson(const TDevices& found) {
    CJsonWriter json;
    json.BeginObject().Key("system");
    found.system.empty() ? json.Null() : json.Text(found.system.c_str());
    json.Key("problem");
    found.problem.empty() ? json.Null() : json.Text(found.problem.c_str());
    json.Key("devices").BeginArray();
    for (const TAudioDevice& device : found.devices) WriteDevice(json, device, false);
    for (const TAudioDevice& device : ListOwnDevices()) WriteDevice(json, device, true);
    json.EndArray().EndObject();
    PrintJson(json);
}

} // namespace

void RunDevices(const TListOptions& options) {
    TDevices found = FindDevices();
    if (options.isJson) return PrintDevicesAsJson(found);
    if (!found.system.empty()) PrintLine(VRL_L("Sound system: ") + found.system);
    if (!found.problem.empty()) PrintLine(VRL_L("No devices of the system: ") + found.problem);
    PrintLine({});
    for (TAudioDevice& device : ListOwnDevices()) found.devices.push_back(std::move(device));
    std::vector<TRow> rows{{VRL_L("Device"), VRL_L("Direction"), VRL_L("Default"), VRL_L("Channels"),
                            VRL_L("Rate"), VRL_L("Name")}};
    for (const TAudioDevice& device : found.devices) {
        rows.push_back({device.id, kDirections[device.direction], device.isDefault ? VRL_L("yes") : VRL_L(""),
                        FormatNumber(device.channels, ""), FormatNumber(device.samplesPerSec, " Hz"),
                        device.name});
    }
    PrintTable(rows);
}
