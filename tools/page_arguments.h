// What the options of `tympan page` say.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tympan::tool {

/// In inches.
struct InchSize {
    double width = 0.0;
    double height = 0.0;
};

/// A value of `--place`, FILE@X,Y[,W,H[,ROT]].
struct PlaceArgument {
    std::string file;
    double x = 0.0; ///< in inches, as the picture's size
    double y = 0.0;
    std::optional<InchSize> size; ///< none for the picture's own
    double rotation = 0.0;        ///< in degrees
};

/// A value of `--window`, N:C1,C2...
struct WindowArgument {
    unsigned int container = 0;
    std::vector<std::uint8_t> colours;
};

/// \name Readers of values
/// \throws UsageFailure for a value of another form.
/// @{
/// WxH, both above 0.
InchSize ParseSize(const std::string& value);
/// The last `@` ends the file's name.
PlaceArgument ParsePlace(const std::string& value);
WindowArgument ParseWindow(const std::string& value);
/// @}

} // namespace tympan::tool
