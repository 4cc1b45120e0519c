#include "decide/Devices.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <utility>

#include "decide/Clocks.h"
#include "decide/SeriesName.h"

namespace vxlsync
{

namespace
{

using Members = std::vector<std::size_t>;

// Cameras count their photographs too. A longer leap in the numbers is another card or camera.
constexpr long longestLeap = 100;

struct Device {
    DeviceEvidence knownBy = DeviceEvidence::none;
    // As its files name it.
    std::string name;
    // What tells it from another of that name.
    std::string mark;
    Members members;
};

// Takes of one device agree in this.
using Key = std::tuple<DeviceEvidence, std::string, std::string>;

std::string modelName(const FileFacts& facts)
{
    if (facts.make.empty() || facts.model.rfind(facts.make, 0) == 0) return facts.model;
    if (facts.model.empty()) return facts.make;
    return facts.make + ' ' + facts.model;
}

Key keyOf(const Take& take)
{
    const FileFacts& facts = take.facts;
    const std::string model = modelName(facts);
    if (!take.device.empty()) return {DeviceEvidence::stated, take.device, ""};
    if (!facts.serialNumber.empty())
        return {DeviceEvidence::serialNumber, model.empty() ? facts.serialNumber : model,
                facts.serialNumber};
    if (!model.empty()) return {DeviceEvidence::model, model, folderOf(take.path)};
    if (!facts.originator.empty())
        return {DeviceEvidence::originator, facts.originator, folderOf(take.path)};
    return {DeviceEvidence::names, "", ""};
}

std::string seriesText(const SeriesName& name)
{
    std::string text = name.folder;
    if (!text.empty()) text += '/';
    if (name.prefix.empty()) return text + '*' + name.ending;
    return text + name.prefix;
}

// The takes whose names count on, by series and without leaps. What writes them must be the same,
// too. Takes with other names are in none.
std::vector<Device> seriesOf(const Takes& takes, const Members& members)
{
    struct Named {
        SeriesName name;
        std::size_t take;
    };
    std::vector<Named> named;
    for (const std::size_t member : members) {
        if (const auto name = seriesNameOf(takes[member].path)) named.push_back({*name, member});
    }
    const auto rateOf = [&](const Named& entry) {
        const std::optional<FrameRate>& rate = takes[entry.take].facts.frameRate;
        return rate ? rate->perSecond() : 0.0;
    };
    const auto keyOfSeries = [&](const Named& entry) {
        return std::make_tuple(entry.name.folder, entry.name.prefix, entry.name.ending,
                               takes[entry.take].facts.encoder, rateOf(entry));
    };
    std::sort(named.begin(), named.end(), [&](const Named& left, const Named& right) {
        return std::make_tuple(keyOfSeries(left), left.name.number, left.name.chapter) <
               std::make_tuple(keyOfSeries(right), right.name.number, right.name.chapter);
    });
    const auto goesOn = [&](std::size_t i) {
        const auto before = keyOfSeries(named[i - 1]);
        const auto here = keyOfSeries(named[i]);
        return before == here && named[i].name.number - named[i - 1].name.number <= longestLeap;
    };
    std::vector<Device> series;
    for (std::size_t i = 0; i < named.size(); ++i) {
        if (i == 0 || !goesOn(i))
            series.push_back({DeviceEvidence::names, seriesText(named[i].name), "", {}});
        series.back().members.push_back(named[i].take);
    }
    for (Device& device : series)
        std::sort(device.members.begin(), device.members.end());
    return series;
}

// The devices that a key stands for. Where the clocks say that more than one looked alike, those
// whose names keep them apart.
std::vector<Device> devicesOf(const Takes& takes, const Key& key, const Members& members)
{
    const auto& [knownBy, name, mark] = key;
    const bool isByNames = knownBy == DeviceEvidence::names;
    // Whatever its clocks say.
    const bool isCertain =
        knownBy == DeviceEvidence::stated || knownBy == DeviceEvidence::serialNumber;
    const bool isContradictory = readClocks(takes, members).isContradictory;
    std::vector<Device> devices;
    if (isCertain || (!isByNames && !isContradictory)) {
        devices.push_back({knownBy, name, mark, members});
        return devices;
    }
    devices = seriesOf(takes, members);
    const auto isNone = [&](const Device& device) {
        const bool isContradicted = readClocks(takes, device.members).isContradictory;
        return isContradicted || (isByNames && device.members.size() < 2);
    };
    devices.erase(std::remove_if(devices.begin(), devices.end(), isNone), devices.end());
    if (isByNames) return devices;
    for (Device& device : devices)
        device = {knownBy, name, device.name, device.members};
    return devices;
}

std::vector<Device> devicesOf(const Takes& takes)
{
    std::map<Key, Members> alike;
    for (std::size_t i = 0; i < takes.size(); ++i)
        alike[keyOf(takes[i])].push_back(i);
    std::vector<Device> devices;
    for (const auto& [key, members] : alike) {
        for (Device& device : devicesOf(takes, key, members))
            devices.push_back(std::move(device));
    }
    return devices;
}

// One name for one device. What was stated keeps its name, since it comes first.
void makeNamesDistinct(std::vector<Device>& devices)
{
    std::map<std::string, int> times;
    for (const Device& device : devices)
        ++times[device.name];
    std::set<std::string> taken;
    for (Device& device : devices) {
        if (times[device.name] > 1 && !device.mark.empty()) device.name += " (" + device.mark + ")";
        const std::string name = device.name;
        for (int number = 2; !taken.insert(device.name).second; ++number)
            device.name = name + ' ' + std::to_string(number);
    }
}

} // namespace

std::vector<Origin> originsOf(const Takes& takes)
{
    std::vector<Device> devices = devicesOf(takes);
    makeNamesDistinct(devices);
    std::vector<Origin> origins(takes.size());
    for (const Device& device : devices) {
        const ClockReadings readings = readClocks(takes, device.members);
        for (std::size_t k = 0; k < device.members.size(); ++k)
            origins[device.members[k]] = {device.name, device.knownBy, readings.starts[k]};
    }
    return origins;
}

} // namespace vxlsync
