#include "cmyk_conversion.h"

#include "failure.h"
#include "names.h"

#include <lcms2.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace tympan::tool {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPreferredName = "default_cmyk.icc";

struct DeleteContext {
    void operator()(cmsContext context) const { cmsDeleteContext(context); }
};
struct CloseProfile {
    void operator()(cmsHPROFILE profile) const { cmsCloseProfile(profile); }
};
struct DeleteTransform {
    void operator()(cmsHTRANSFORM transform) const { cmsDeleteTransform(transform); }
};
using Context = std::unique_ptr<std::remove_pointer_t<cmsContext>, DeleteContext>;
using Profile = std::unique_ptr<void, CloseProfile>;
using Transform = std::unique_ptr<void, DeleteTransform>;

// A context of one's own, for the common one's failures go nowhere that can be asked.
Context MakeContext()
{
    Context context(cmsCreateContext(nullptr, nullptr));
    if (context == nullptr)
        throw std::bad_alloc();
    cmsSetLogErrorHandlerTHR(context.get(), [](cmsContext, cmsUInt32Number, const char*) {});
    return context;
}

bool PrintsCmyk(cmsHPROFILE profile)
{
    return cmsGetColorSpace(profile) == cmsSigCmykData &&
           cmsGetDeviceClass(profile) == cmsSigOutputClass;
}

bool PrintsCmyk(const fs::path& path)
{
    const Context context = MakeContext();
    const Profile profile(cmsOpenProfileFromFileTHR(context.get(), path.c_str(), "r"));
    return profile != nullptr && PrintsCmyk(profile.get());
}

std::vector<fs::path> ProfileFolders()
{
    const char* const folders = std::getenv("XDG_DATA_DIRS");
    std::istringstream list(folders != nullptr && *folders != '\0' ? folders
                                                                   : "/usr/local/share:/usr/share");
    std::vector<fs::path> result;
    for (std::string folder; std::getline(list, folder, ':');)
        if (!folder.empty())
            result.push_back(fs::path(folder) / "color" / "icc");
    return result;
}

// What can't be listed is passed over: other folders may hold a profile.
void AddProfiles(const fs::path& folder, std::vector<fs::path>& profiles)
{
    std::error_code error;
    fs::recursive_directory_iterator entry(folder, fs::directory_options::skip_permission_denied,
                                           error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        const std::string ending = EndingOf(entry->path().string());
        std::error_code unknown;
        if ((ending == ".icc" || ending == ".icm") && entry->is_regular_file(unknown))
            profiles.push_back(entry->path());
    }
}

// White without any of its own colour, as a grey picture has it.
Profile GreyOfGamma(cmsContext context, double gamma)
{
    cmsToneCurve* const curve = cmsBuildGamma(context, gamma);
    if (curve == nullptr)
        throw std::bad_alloc();
    Profile profile(cmsCreateGrayProfileTHR(context, cmsD50_xyY(), curve));
    cmsFreeToneCurve(curve);
    return profile;
}

Profile AssumedProfile(cmsContext context, SampleKind kind)
{
    constexpr double kGamma = 2.2;
    Profile profile = kind == SampleKind::Grey ? GreyOfGamma(context, kGamma)
                                               : Profile(cmsCreate_sRGBProfileTHR(context));
    if (profile == nullptr)
        throw std::bad_alloc();
    return profile;
}

// The profile in the picture, if it is one of the picture's kind.
Profile OwnProfile(cmsContext context, const SourceForm& form)
{
    const auto size = static_cast<cmsUInt32Number>(form.profile.size());
    Profile profile(cmsOpenProfileFromMemTHR(context, form.profile.data(), size));
    const auto wanted = form.kind == SampleKind::Grey ? cmsSigGrayData : cmsSigRgbData;
    if (profile != nullptr && cmsGetColorSpace(profile.get()) != wanted)
        profile.reset();
    return profile;
}

Profile OpenOutputProfile(cmsContext context, const std::string& path)
{
    constexpr char kAdvice[] = "Give the ICC profile of a CMYK press or paper with --profile.";
    OpenStream(path); // tells what keeps the file from being read
    Profile profile(cmsOpenProfileFromFileTHR(context, path.c_str(), "r"));
    if (profile == nullptr)
        throw FileFailure(path, "is not an ICC profile", {}, kAdvice);
    if (!PrintsCmyk(profile.get()))
        throw FileFailure(path, "is not the profile of a CMYK output", {}, kAdvice);
    return profile;
}

Transform MakeTransform(cmsContext context, cmsHPROFILE from, SampleKind kind, cmsHPROFILE to)
{
    return Transform(cmsCreateTransformTHR(
        context, from, kind == SampleKind::Grey ? TYPE_GRAY_8 : TYPE_RGB_8, to, TYPE_CMYK_8,
        INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_BLACKPOINTCOMPENSATION));
}

} // namespace

std::string FindCmykProfile()
{
    std::vector<fs::path> profiles;
    for (const fs::path& folder : ProfileFolders())
        AddProfiles(folder, profiles);
    std::sort(profiles.begin(), profiles.end());
    std::stable_partition(profiles.begin(), profiles.end(), [](const fs::path& path) {
        return path.filename().string() == kPreferredName;
    });
    const auto found = std::find_if(profiles.begin(), profiles.end(),
                                    [](const fs::path& path) { return PrintsCmyk(path); });
    if (found != profiles.end())
        return found->string();
    const std::vector<fs::path> folders = ProfileFolders();
    throw FileFailure(folders.empty() ? "color/icc" : folders.back().string(),
                      "no CMYK output profile is found in the system's colour folders", {},
                      "Install the package libgs-common, or give a profile with --profile.");
}

struct CmykConversion::Engine {
    Context context = MakeContext(); // outlives the transform
    Transform transform;
    std::size_t samples = 0;
};

CmykConversion::CmykConversion(const std::string& picture, const SourceForm& form,
                               const std::string& profile)
    : engine_(std::make_unique<Engine>())
{
    cmsContext context = engine_->context.get();
    engine_->samples = SamplesPerPixel(form.kind);
    const Profile output = OpenOutputProfile(context, profile);
    if (!form.profile.empty()) {
        const Profile own = OwnProfile(context, form);
        if (own != nullptr)
            engine_->transform = MakeTransform(context, own.get(), form.kind, output.get());
        if (engine_->transform == nullptr)
            Warn(picture, "its ICC profile can't serve; its colours are taken as usual ones");
    }
    if (engine_->transform == nullptr) {
        const Profile assumed = AssumedProfile(context, form.kind);
        engine_->transform = MakeTransform(context, assumed.get(), form.kind, output.get());
    }
    if (engine_->transform == nullptr)
        throw FileFailure(profile, "the profile can't be used to print with", {},
                          "Give another one with --profile.");
}

CmykConversion::~CmykConversion() = default;

void CmykConversion::Convert(std::span<const std::uint8_t> row, std::span<std::uint8_t> ink) const
{
    cmsDoTransform(engine_->transform.get(), row.data(), ink.data(),
                   static_cast<cmsUInt32Number>(row.size() / engine_->samples));
}

} // namespace tympan::tool
