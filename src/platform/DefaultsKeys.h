#pragma once

#include <QLatin1StringView>

// The keys of the per-user settings store. The spellings are the stored names and must not
// change, or existing users lose their settings.
namespace marigold::keys {

inline constexpr QLatin1StringView DefFileFormat{"FileFormat"};
inline constexpr QLatin1StringView DefJpegQuality{"JpegQuality"};
inline constexpr QLatin1StringView DefLimitFilesize{"LimitFilesize"};
inline constexpr QLatin1StringView DefFilesizeLimit{"FilesizeLimit"};
inline constexpr QLatin1StringView DefDisplaySizeLimitMessage{"DisplaySizeLimitMessage"};
inline constexpr QLatin1StringView DefPreviewMode{"PreviewMode"};
inline constexpr QLatin1StringView DefSharpen{"Sharpen"};
inline constexpr QLatin1StringView DefSharpness{"Sharpness"};
inline constexpr QLatin1StringView DefTimedCaptureDelay{"TimedCaptureDelay"};
inline constexpr QLatin1StringView DefPlaySound{"PlaySound"};
inline constexpr QLatin1StringView DefTimeStamp{"TimeStamp"};
inline constexpr QLatin1StringView DefCursor{"Cursor"};
inline constexpr QLatin1StringView DefDestinations{"Destinations"};
inline constexpr QLatin1StringView DefDoubleClickDestination{"DClickDestination"};
inline constexpr QLatin1StringView DefOpenLastAtLaunch{"OpenLastAtLaunch"};
inline constexpr QLatin1StringView DefTexturedWindow{"TexturedWindow"};
inline constexpr QLatin1StringView DefCrossHair{"CrossHair"};
inline constexpr QLatin1StringView DefLivePreview{"LivePreview"};
inline constexpr QLatin1StringView DefConstrainRotation{"ConstrainRotation"};
inline constexpr QLatin1StringView DefAutoOrderBack{"AutoOrderBack"};
inline constexpr QLatin1StringView DefAutoOrderFront{"AutoOrderFront"};
inline constexpr QLatin1StringView DefHideExtension{"HideExtension"};
inline constexpr QLatin1StringView DefPreserveExif{"PreserveExif"};
inline constexpr QLatin1StringView DefBorder{"Border"};
inline constexpr QLatin1StringView DefBorderThickness{"BorderThickness"};
inline constexpr QLatin1StringView DefBorderColor{"BorderColor"};
inline constexpr QLatin1StringView DefInterpolation{"Interpolation"};
inline constexpr QLatin1StringView DefCustomRatioWidth{"CustomRatioWidth"};
inline constexpr QLatin1StringView DefCustomRatioHeight{"CustomRatioHeight"};
inline constexpr QLatin1StringView DefCustomSizeWidth{"CustomSizeWidth"};
inline constexpr QLatin1StringView DefCustomSizeHeight{"CustomSizeHeight"};
inline constexpr QLatin1StringView DefSelectedPreset{"SelectedPreset"};
inline constexpr QLatin1StringView DefRatioPresets{"RatioConstraintPresets"};
inline constexpr QLatin1StringView DefSizePresets{"SizeConstraintPresets"};
inline constexpr QLatin1StringView DefRememberLastConstraint{"RememberLastConstraint"};
// The update check's switch; the prefix keeps it apart from the update component's own key.
inline constexpr QLatin1StringView DefCheckAtStartup{"BFCheckAtStartup"};

}  // namespace marigold::keys
