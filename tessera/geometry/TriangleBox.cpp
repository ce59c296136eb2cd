#include "tessera/geometry/TriangleBox.h"

#include "tessera/geometry/Line.h"

namespace Tessera::Geometry {

using Vex::Math::Point3;
using Vex::Math::Vector3;

namespace {

// Fixed, whatever the length scale: triangles whose cross products stay below kSideTol are hollow.
constexpr double kVertexTolSq = 1e-20; // square model units
constexpr double kSideTol = 1e-10;     // on dot products of cross products, fourth power of a length

double Dot(const Vector3& a, const Vector3& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

Vector3 Cross(const Vector3& a, const Vector3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

} // namespace

TriangleBox::TriangleBox(const Point& a, const Point& b, const Point& c) : vertices_{a, b, c} {}

bool TriangleBox::IsPointInTriangleBox(const Point3& p, double /*tol*/) const {
    Vector3 toVertex[3];
    for (int i = 0; i < 3; ++i) {
        toVertex[i] = {vertices_[i].x - p.x, vertices_[i].y - p.y, -p.z};
        if (Dot(toVertex[i], toVertex[i]) <= kVertexTolSq) {
            return true;
        }
    }
    // The edges are judged in the plane: the height of p is ignored here.
    const Point planar(p.x, p.y);
    static constexpr int kEdges[3][2] = {{1, 0}, {2, 1}, {0, 2}};
    for (const auto& [from, to] : kEdges) {
        const Line edge(vertices_[from], vertices_[to]);
        if (edge.OnLine(planar) && edge.WithinBounds(planar)) {
            return true;
        }
    }
    // The three faces that p spans with the edges turn the same way when p sees the triangle from inside.
    Vector3 normals[3];
    for (int i = 0; i < 3; ++i) {
        normals[i] = Cross(toVertex[i], toVertex[(i + 1) % 3]);
    }
    const double sides[3] = {Dot(normals[0], normals[1]), Dot(normals[1], normals[2]),
                             Dot(normals[2], normals[0])};
    const bool allSame = sides[0] > kSideTol && sides[1] > kSideTol && sides[2] > kSideTol;
    const bool allOpposite = sides[0] < -kSideTol && sides[1] < -kSideTol && sides[2] < -kSideTol;
    return allSame || allOpposite;
}

} // namespace Tessera::Geometry
