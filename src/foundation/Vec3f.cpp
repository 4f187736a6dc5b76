#include "foundation/Vec3f.h"

#include <cmath>

#include "foundation/Counter.h"
#include "foundation/Float3.h"

using namespace varnet;

std::int32_t g_nVectorCount = 0;

namespace {

// Compared with the squared length of a sum of two vectors: a shorter sum has no direction.
constexpr double kOpposite2 = 1e-5;

Vec3f FromFloat3(Float3 const& v) { return Vec3f(v.x, v.y, v.z); }

}  // namespace

Vec3f::Vec3f() : Vec3f(0.0f, 0.0f, 0.0f) {}

Vec3f::Vec3f(float fX, float fY, float fZ) : x(fX), y(fY), z(fZ) { AddToCounter(g_nVectorCount, 1); }

Vec3f::Vec3f(Vec3f const& other) : Vec3f(other.x, other.y, other.z) {}

Vec3f::~Vec3f() { AddToCounter(g_nVectorCount, -1); }

void Vec3f::Normalize() {
    float const fLength = std::sqrt(Dot(*this, *this));
    x /= fLength;
    y /= fLength;
    z /= fLength;
}

float Dot(Vec3f const& a, Vec3f const& b) { return Dot(ToFloat3(a), ToFloat3(b)); }

Vec3f Cross(Vec3f const& a, Vec3f const& b) { return FromFloat3(Cross(ToFloat3(a), ToFloat3(b))); }

Vec3f operator+(Vec3f const& a, Vec3f const& b) { return FromFloat3(Sum(ToFloat3(a), ToFloat3(b))); }

Vec3f operator-(Vec3f const& a, Vec3f const& b) { return Vec3f(a.x - b.x, a.y - b.y, a.z - b.z); }

Vec3f operator-(Vec3f const& a) { return Vec3f(-a.x, -a.y, -a.z); }

Vec3f operator*(float fFactor, Vec3f const& a) { return Vec3f(fFactor * a.x, fFactor * a.y, fFactor * a.z); }

Vec3f operator*(Vec3f const& a, float fFactor) { return fFactor * a; }

Vec3f operator/(Vec3f const& a, float fDivisor) {
    return Vec3f(a.x / fDivisor, a.y / fDivisor, a.z / fDivisor);
}

Vec3f Normalized(Vec3f const& a) {
    Vec3f result(a);
    result.Normalize();
    return result;
}

Vec3f Bisect(Vec3f const& a, Vec3f const& b) {
    Vec3f sum = a + b;
    if (static_cast<double>(Dot(sum, sum)) < kOpposite2) return Vec3f(0.0f, 0.0f, 1.0f);
    sum.Normalize();
    return sum;
}
