#include <cmath>

#include "tessera/dimension/DimensionBase.h"
#include "tessera/dimension/internal/NumberText.h"
#include "tessera/dimension/internal/TextBox.h"
#include "tessera/geometry/Vector.h"

// What a dimension's text reads and which way it stands.

namespace Tessera::Dimension {

using Geometry::Vector;

namespace {

constexpr double kAngleTolDeg = 1e-10;  // width of the right-angle bands, degrees
constexpr double kComponentTol = 1e-10; // component of a unit vector that counts as zero

bool IsAt(double angleDeg, double bandDeg) {
    return std::fabs(angleDeg - bandDeg) <= kAngleTolDeg;
}

} // namespace

// --- Number

std::string DimensionBase::GetAnnotationText() const {
    return std::to_string(GetAnnotation()); // "%f"
}

int DimensionBase::GetNumDigitsRequired() const {
    if (GetType() == Angular)
        return 0;
    const int unitCode = Core::AskLengthUnitCode();
    return unitCode == 0 || unitCode == 1 ? 2 : 3;
}

int DimensionBase::GetNumDigitsAfterDecimalPoint(int n) const {
    const NumberText number = PrintNumber(GetDisplayedValue(), n);
    if (number.isWhole)
        return 0;
    if (n < 1)
        return n;
    int digits = n;
    // At most n characters from the end; a text shorter than that ends the walk too.
    for (int i = number.length - 1; i >= 0 && i >= number.length - n && number.text[i] == '0'; --i)
        --digits;
    return digits;
}

double DimensionBase::ComputeAnnotationStringLength() const {
    const int n = GetNumDigitsAfterDecimalPoint(GetNumDigitsRequired());
    double value = GetDisplayedValue();
    if (n == 0)
        value = std::trunc(value + 0.5);
    int length = PrintNumber(value, n).length;
    if (GetType() == Angular)
        ++length; // the degree sign
    return length * 0.5 * GetFontHeight();
}

// --- Direction

double DimensionBase::ComputeAnnotationOrientationAngle() {
    GetOrientation().Normalize();
    return ReadingAngle(GetOrientation());
}

void DimensionBase::ComputeTextAngleAndHeightOffset(DimensionType_e /*type*/, double angleDeg,
                                                    double heightDelta, double* textAngle,
                                                    double* textHeightOffset) {
    const double a = angleDeg;
    *textAngle = a; // negative angles, 270 to 360, and the slivers between the bands
    bool isTurned = true;
    if (IsAt(a, 0.0) || IsAt(a, 180.0)) {
        *textAngle = 0.0;
        isTurned = false;
    } else if (IsAt(a, 90.0) || IsAt(a, 270.0)) {
        *textAngle = 90.0;
    } else if (a > 90.0000000001 && a < 179.9999999999) {
        *textAngle = a + 180.0;
    } else if (a > 180.0000000001 && a < 269.9999999999) {
        *textAngle = a - 180.0;
    } else if (!(a > 1e-10 && a < 89.9999999999)) {
        isTurned = false;
    }
    if (isTurned)
        *textHeightOffset += heightDelta;
}

Vector DimensionBase::ComputeOffsetVector(const Vector& direction) const {
    const Vector n = direction.GetPerpendicular();
    const double deciding = std::fabs(n.x) > kComponentTol ? n.x : n.y;
    return deciding < -kComponentTol ? -1.0 * n : n;
}

} // namespace Tessera::Dimension
