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

const char* const cUnselectedExteriorKey = "sn_ue";
const char* const cUnselectedInteriorKey = "sn_ui";
const char* const cUnselectedTangentKey = "sn_ut";
const char* const cSelectedExteriorKey = "sn_se";
const char* const cSelectedInteriorKey = "sn_si";
const char* const cSelectedTangentKey = "sn_st";

} // namespace

void SetUnselectedExteriorColor(Splinor& ioCurve, const QColor& iColor)
{
    SetColorProperty(ioCurve, cUnselectedExteriorKey, iColor);
}

void GetUnselectedExteriorColor(const Splinor& iCurve, QColor& oColor)
{
    GetColorProperty(iCurve, cUnselectedExteriorKey, oColor);
}

bool HasUnselectedExteriorColor(const Splinor& iCurve)
{
    return HasColorProperty(iCurve, cUnselectedExteriorKey);
}

void RemoveUnselectedExteriorColor(Splinor& ioCurve)
{
    RemoveColorProperty(ioCurve, cUnselectedExteriorKey);
}

void SetUnselectedInteriorColor(Splinor& ioCurve, const QColor& iColor)
{
    SetColorProperty(ioCurve, cUnselectedInteriorKey, iColor);
}

void GetUnselectedInteriorColor(const Splinor& iCurve, QColor& oColor)
{
    GetColorProperty(iCurve, cUnselectedInteriorKey, oColor);
}

bool HasUnselectedInteriorColor(const Splinor& iCurve)
{
    return HasColorProperty(iCurve, cUnselectedInteriorKey);
}

void RemoveUnselectedInteriorColor(Splinor& ioCurve)
{
    RemoveColorProperty(ioCurve, cUnselectedInteriorKey);
}

void SetUnselectedTangentColor(Splinor& ioCurve, const QColor& iColor)
{
    SetColorProperty(ioCurve, cUnselectedTangentKey, iColor);
}

void GetUnselectedTangentColor(const Splinor& iCurve, QColor& oColor)
{
    GetColorProperty(iCurve, cUnselectedTangentKey, oColor);
}

bool HasUnselectedTangentColor(const Splinor& iCurve)
{
    return HasColorProperty(iCurve, cUnselectedTangentKey);
}

void RemoveUnselectedTangentColor(Splinor& ioCurve)
{
    RemoveColorProperty(ioCurve, cUnselectedTangentKey);
}

void SetSelectedExteriorColor(Splinor& ioCurve, const QColor& iColor)
{
    SetColorProperty(ioCurve, cSelectedExteriorKey, iColor);
}

void GetSelectedExteriorColor(const Splinor& iCurve, QColor& oColor)
{
    GetColorProperty(iCurve, cSelectedExteriorKey, oColor);
}

bool HasSelectedExteriorColor(const Splinor& iCurve)
{
    return HasColorProperty(iCurve, cSelectedExteriorKey);
}

void RemoveSelectedExteriorColor(Splinor& ioCurve)
{
    RemoveColorProperty(ioCurve, cSelectedExteriorKey);
}

void SetSelectedInteriorColor(Splinor& ioCurve, const QColor& iColor)
{
    SetColorProperty(ioCurve, cSelectedInteriorKey, iColor);
}

void GetSelectedInteriorColor(const Splinor& iCurve, QColor& oColor)
{
    GetColorProperty(iCurve, cSelectedInteriorKey, oColor);
}

bool HasSelectedInteriorColor(const Splinor& iCurve)
{
    return HasColorProperty(iCurve, cSelectedInteriorKey);
}

void RemoveSelectedInteriorColor(Splinor& ioCurve)
{
    RemoveColorProperty(ioCurve, cSelectedInteriorKey);
}

void SetSelectedTangentColor(Splinor& ioCurve, const QColor& iColor)
{
    SetColorProperty(ioCurve, cSelectedTangentKey, iColor);
}

void GetSelectedTangentColor(const Splinor& iCurve, QColor& oColor)
{
    GetColorProperty(iCurve, cSelectedTangentKey, oColor);
}

bool HasSelectedTangentColor(const Splinor& iCurve)
{
    return HasColorProperty(iCurve, cSelectedTangentKey);
}

void RemoveSelectedTangentColor(Splinor& ioCurve)
{
    RemoveColorProperty(ioCurve, cSelectedTangentKey);
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
