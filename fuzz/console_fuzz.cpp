// Any command line, its arguments split at zeros and line ends: it is understood or refused with a reason,
// and what was understood can be worked with. Nothing is run, and no file looked at.

#include <cmath>
#include <string_view>

#include "cli/help.h"
#include "cli/work_settings.h"
#include "fuzz/require.h"
#include "platform/utf8.h"

using namespace skyvault;

namespace {

/// Every part of a good command line is understood or refused by itself.
struct Check {
    void operator()(const Announcement& announcement) const {
        Require(announcement.status == kDone || announcement.status == kWrongUsage);
        Require(announcement.text.ends_with(L'\n'));
        const bool hint = announcement.text.find(L"\nTry \"skyvault-cli ") != std::wstring::npos;
        Require((announcement.status == kWrongUsage) ==
                (announcement.text.starts_with(L"skyvault-cli: ") && hint));
    }

    void operator()(const ConvertOptions& options) const {
        Work(options);
        Require(options.from != nullptr && options.to != nullptr && IsExportLayout(*options.to));
        Require(IsGenerator(*options.from) != IsImportLayout(*options.from));
        Require(static_cast<int>(options.inputs.size()) == options.from->sources && !options.output.empty());
        for (const std::wstring& input : options.inputs) Require(!input.empty());
        const HeadingPitchRoll& camera = options.camera;
        Require(std::isfinite(Radians(camera.heading) + Radians(camera.pitch) + Radians(camera.roll)));
    }

    void operator()(const BatchOptions& options) const {
        Work(options);
        for (const LayoutRow* layout : {options.job.from, options.job.to}) {
            Require(layout != nullptr && layout->kind == LayoutKind::Panorama);
        }
        Require(!options.job.sourceFolder.empty() && !options.job.destinationFolder.empty());
        Require(options.shard >= 1 && options.shard <= options.shards);
    }

    void operator()(const InfoOptions& options) const { Require(!options.path.empty()); }

    void Work(WorkOptions options) const {
        options.settingsFile.clear();
        AppState settings;
        Require(LoadWorkSettings(options, settings));
        for (const auto& [setting, value] : options.settings) Require(SetFromText(settings, *setting, value));
        Require(!options.horizon || std::isfinite(*options.horizon));
        const Modifications modifications = ModificationsOf(options);
        Require(modifications.logoSize >= 0 && modifications.logoSize <= 1);
        Require(options.threads >= 0 && options.threads <= 1024);
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    std::vector<std::wstring> arguments;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find_first_of(std::string_view("\0\n", 2), at), text.size());
        arguments.push_back(FromUtf8(text.substr(at, end - at)));
        at = end + 1;
    }
    std::visit(Check{}, ParseArguments(arguments));
    return 0;
}
