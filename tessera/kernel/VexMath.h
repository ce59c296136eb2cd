// Plain records of the numeric kernel.
#pragma once

namespace Vex::Math {

struct Point2 {
    double x, y;
};
struct Vector2 {
    double x, y;
};
struct Point3 {
    double x, y, z;
};
struct Vector3 {
    double x, y, z;
};
/// 4 x 4, row by row, on column vectors.
struct TransformMatrix {
    double m[4][4];
};

} // namespace Vex::Math
