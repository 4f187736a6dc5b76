#include "foundation/Mat4f.h"

#include "foundation/Counter.h"

using namespace varnet;

std::int32_t g_nMatrixCount = 0;

namespace {

constexpr int kTranspose = 1;

// The matrix whose elements are element(row, column).
template <class Element>
Mat4f Build(Element const& element) {
    Mat4f result(0.0f);
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) result.m[i][j] = element(i, j);
    }
    return result;
}

}  // namespace

Mat4f::Mat4f(float fValue) {
    for (auto& row : m) {
        for (float& element : row) element = fValue;
    }
    AddToCounter(g_nMatrixCount, 1);
}

Mat4f::Mat4f(Mat4f const& other) : Mat4f(other, 0) {}

Mat4f::Mat4f(Mat4f const& other, int nMode) {
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) m[i][j] = nMode == kTranspose ? other.m[j][i] : other.m[i][j];
    }
    AddToCounter(g_nMatrixCount, 1);
}

Mat4f::~Mat4f() { AddToCounter(g_nMatrixCount, -1); }

Mat4f& Mat4f::operator/=(float fDivisor) {
    for (auto& row : m) {
        for (float& element : row) element /= fDivisor;
    }
    return *this;
}

void Mat4f::Identity() {
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) m[i][j] = i == j ? 1.0f : 0.0f;
    }
}

Mat4f operator*(Mat4f const& a, Mat4f const& b) {
    return Build([&a, &b](int i, int j) {
        return a.m[i][0] * b.m[0][j] + a.m[i][1] * b.m[1][j] + a.m[i][2] * b.m[2][j] + a.m[i][3] * b.m[3][j];
    });
}

Mat4f operator+(Mat4f const& a, Mat4f const& b) {
    return Build([&a, &b](int i, int j) { return a.m[i][j] + b.m[i][j]; });
}

Mat4f operator-(Mat4f const& a, Mat4f const& b) {
    return Build([&a, &b](int i, int j) { return a.m[i][j] - b.m[i][j]; });
}

Mat4f operator-(Mat4f const& a) {
    return Build([&a](int i, int j) { return -a.m[i][j]; });
}

Mat4f operator/(Mat4f const& a, float fDivisor) {
    return Build([&a, fDivisor](int i, int j) { return a.m[i][j] / fDivisor; });
}

Vec3f operator*(Vec3f const& a, Mat4f const& matrix) {
    auto const& m = matrix.m;
    return Vec3f(a.x * m[0][0] + a.y * m[1][0] + a.z * m[2][0] + m[3][0],
                 a.x * m[0][1] + a.y * m[1][1] + a.z * m[2][1] + m[3][1],
                 a.x * m[0][2] + a.y * m[1][2] + a.z * m[2][2] + m[3][2]);
}
