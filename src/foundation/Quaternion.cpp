#include "foundation/Quaternion.h"

#include <cmath>

#include "foundation/Counter.h"

using namespace varnet;

std::int32_t g_nQuaternionCount = 0;

namespace {

// The rotation of row vectors, which is the transpose of the matrix that textbooks give for columns. fScale
// is 2 over the squared norm.
Mat4f RotationOf(quaternion const& q, float fScale) {
    float const xx = q.v.x * q.v.x;
    float const yy = q.v.y * q.v.y;
    float const zz = q.v.z * q.v.z;
    float const xy = q.v.x * q.v.y;
    float const xz = q.v.x * q.v.z;
    float const yz = q.v.y * q.v.z;
    float const wx = q.w * q.v.x;
    float const wy = q.w * q.v.y;
    float const wz = q.w * q.v.z;

    Mat4f result(0.0f);
    result.m[0][0] = 1.0f - fScale * (yy + zz);
    result.m[0][1] = fScale * (xy + wz);
    result.m[0][2] = fScale * (xz - wy);
    result.m[1][0] = fScale * (xy - wz);
    result.m[1][1] = 1.0f - fScale * (xx + zz);
    result.m[1][2] = fScale * (yz + wx);
    result.m[2][0] = fScale * (xz + wy);
    result.m[2][1] = fScale * (yz - wx);
    result.m[2][2] = 1.0f - fScale * (xx + yy);
    result.m[3][3] = 1.0f;
    return result;
}

}  // namespace

quaternion::quaternion() : quaternion(0.0f, Vec3f()) {}

quaternion::quaternion(float fW, Vec3f const& vector) : w(fW), v(vector) {
    AddToCounter(g_nQuaternionCount, 1);
}

quaternion::quaternion(quaternion const& other) : quaternion(other.w, other.v) {}

quaternion::~quaternion() { AddToCounter(g_nQuaternionCount, -1); }

Mat4f quaternion::ToMatrix() const {
    float const fNorm2 = SquaredNorm(*this);
    return RotationOf(*this, fNorm2 > 0.0f ? 2.0f / fNorm2 : 0.0f);
}

quaternion& quaternion::operator*=(quaternion const& other) { return *this = *this * other; }

quaternion& quaternion::operator+=(quaternion const& other) { return *this = *this + other; }

quaternion& quaternion::operator-=(quaternion const& other) { return *this = *this - other; }

quaternion& quaternion::operator*=(float fFactor) { return *this = *this * fFactor; }

quaternion& quaternion::operator/=(quaternion const& other) { return *this = *this / other; }

void quaternion::Negate() { *this = -*this; }

void quaternion::Invert() { *this = Inverse(*this); }

void quaternion::Normalize() {
    float const fNorm = std::sqrt(SquaredNorm(*this));
    w /= fNorm;
    v = v / fNorm;
}

unitquaternion::unitquaternion(quaternion const& value) : quaternion(value) { Normalize(); }

Mat4f unitquaternion::ToMatrix() const { return RotationOf(*this, 2.0f); }

quaternion operator*(quaternion const& a, quaternion const& b) {
    return quaternion(a.w * b.w - Dot(a.v, b.v), Cross(a.v, b.v) + a.w * b.v + b.w * a.v);
}

quaternion operator+(quaternion const& a, quaternion const& b) { return quaternion(a.w + b.w, a.v + b.v); }

quaternion operator-(quaternion const& a, quaternion const& b) { return quaternion(a.w - b.w, a.v - b.v); }

quaternion operator-(quaternion const& a) { return quaternion(-a.w, -a.v); }

quaternion operator*(quaternion const& a, float fFactor) { return quaternion(a.w * fFactor, a.v * fFactor); }

quaternion operator*(float fFactor, quaternion const& a) { return a * fFactor; }

quaternion operator/(quaternion const& a, quaternion const& b) { return a * Inverse(b); }

bool operator==(quaternion const& a, quaternion const& b) {
    return a.w == b.w && a.v.x == b.v.x && a.v.y == b.v.y && a.v.z == b.v.z;
}

bool operator!=(quaternion const& a, quaternion const& b) { return !(a == b); }

float SquaredNorm(quaternion const& a) { return a.w * a.w + Dot(a.v, a.v); }

quaternion Inverse(quaternion const& a) {
    float const fNorm2 = SquaredNorm(a);
    return quaternion(a.w / fNorm2, -a.v / fNorm2);
}

quaternion Normalized(quaternion const& a) {
    quaternion result(a);
    result.Normalize();
    return result;
}
