#include "render/CurveColors.h"

#include "splinorlib/Splinor.h"

#include <QColor>

#include <sstream>
#include <string>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

using SplinorLib::v19::Splinor;

namespace {

// The stored text is "red green blue" in decimal, e.g. "255 255 255" for white.
void SetColorProperty(Splinor& ioCurve, const char* iKey, const QColor& iColor)
{
    std::ostringstream text;
    text << iColor.red() << ' ' << iColor.green() << ' ' << iColor.blue();
    ioCurve.setProperty(iKey, text.str().c_str());
}

bool IsChannel(int iValue)
{
    return iValue >= 0 && iValue <= 255;
}

// Nothing in the library writes anything but three channels, yet a host may set the property
// itself. Any text that is not three integers from 0 to 255 reads as opaque black, the same as
// a missing property, so that a reader always gets a valid colour and QColor no warning.
void GetColorProperty(const Splinor& iCurve, const char* iKey, QColor& oColor)
{
    std::istringstream text(iCurve.getProperty(iKey));
    int red = 0;
    int green = 0;
    int blue = 0;
    if (text >> red >> green >> blue && IsChannel(red) && IsChannel(green) && IsChannel(blue))
        oColor.setRgb(red, green, blue, 255);
    else
        oColor.setRgb(0, 0, 0, 255);
}

bool HasColorProperty(const Splinor& iCurve, const char* iKey)
{
    return iCurve.getProperty(iKey)[0] != '\0';
}

void RemoveColorProperty(Splinor& ioCurve, const char* iKey)
{
    ioCurve.setProperty(iKey, "");
}

} // namespace

// The four functions of each key; the logic lives once, in the helpers above.
#define SPLINOR_CURVE_COLOR_FUNCTIONS(Name, Key)                                                                       \
    void Set##Name##Color(Splinor& ioCurve, const QColor& iColor) { SetColorProperty(ioCurve, Key, iColor); }          \
    void Get##Name##Color(const Splinor& iCurve, QColor& oColor) { GetColorProperty(iCurve, Key, oColor); }            \
    bool Has##Name##Color(const Splinor& iCurve) { return HasColorProperty(iCurve, Key); }                            \
    void Remove##Name##Color(Splinor& ioCurve) { RemoveColorProperty(ioCurve, Key); }

SPLINOR_CURVE_COLOR_FUNCTIONS(UnselectedExterior, "sn_ue")
SPLINOR_CURVE_COLOR_FUNCTIONS(UnselectedInterior, "sn_ui")
SPLINOR_CURVE_COLOR_FUNCTIONS(UnselectedTangent, "sn_ut")
SPLINOR_CURVE_COLOR_FUNCTIONS(SelectedExterior, "sn_se")
SPLINOR_CURVE_COLOR_FUNCTIONS(SelectedInterior, "sn_si")
SPLINOR_CURVE_COLOR_FUNCTIONS(SelectedTangent, "sn_st")

#undef SPLINOR_CURVE_COLOR_FUNCTIONS

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
