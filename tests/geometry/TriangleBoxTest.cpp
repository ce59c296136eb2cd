#include "tessera/geometry/TriangleBox.h"

#include "tests/support/Test.h"

namespace Tessera::Geometry {
namespace {

TEST(TriangleBox, KnownPlaces) {
    const TriangleBox right(Point(0, 0), Point(4, 0), Point(0, 3));
    const TriangleBox equal(Point(-1, 0), Point(1, 0), Point(0, std::sqrt(3.0)));
    const TriangleBox tiny(Point(0, 0), Point(1e-3, 0), Point(0, 1e-3));
    const struct {
        const char* name;
        const TriangleBox& box;
        Vex::Math::Point3 p;
        bool inside;
    } rows[] = {
        {"vertex", right, {4, 0, 0}, true},
        {"edge", right, {2, 1.5, 0}, true},
        {"an edge whatever the height", right, {2, 0, 50}, true},
        {"beyond an edge's end", right, {5, 0, 0}, false},
        {"before its start", right, {-1, 0, 0}, false},
        {"beside the slope", right, {2.1, 1.5, 0}, false},
        {"a little above", right, {1, 1, 0.1}, true},
        {"far above, the faces of a right angle turn differently", right, {1, 1, 100}, false},
        {"far above, all turn the other way", equal, {0, 0.5, 100}, true},
        {"the fixed limit makes tiny triangles hollow", tiny, {3e-4, 3e-4, 0}, false},
        {"but keeps their edges", tiny, {5e-4, 5e-4, 0}, true},
    };
    for (const auto& row : rows) // the tolerance is not used
        EXPECT_EQ(row.box.IsPointInTriangleBox(row.p, 1e6), row.inside) << row.name;
}

} // namespace
} // namespace Tessera::Geometry
