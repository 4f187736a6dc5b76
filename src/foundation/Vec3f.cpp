#include "foundation/Vec3f.h"

#include "foundation/Counter.h"
#include "foundation/Float3.h"

std::int32_t g_nVectorCount = 0;

namespace {

Vec3f FromFloat3(Float3 const& v) { return Vec3f(v.x, v.y, v.z); }

}  // namespace

Vec3f::Vec3f() : Vec3f(0.0f, 0.0f, 0.0f) {}

Vec3f::Vec3f(float fX, float fY, float fZ) : x(fX), y(fY), z(fZ) { AddToCounter(g_nVectorCount, 1); }

Vec3f::Vec3f(Vec3f const& other) : Vec3f(other.x, other.y, other.z) {}

Vec3f::~Vec3f() { AddToCounter(g_nVectorCount, -1); }

float Dot(Vec3f const& a, Vec3f const& b) { return Dot(ToFloat3(a), ToFloat3(b)); }

Vec3f Cross(Vec3f const& a, Vec3f const& b) { return FromFloat3(Cross(ToFloat3(a), ToFloat3(b))); }

Vec3f operator+(Vec3f const& a, Vec3f const& b) { return FromFloat3(Sum(ToFloat3(a), ToFloat3(b))); }
