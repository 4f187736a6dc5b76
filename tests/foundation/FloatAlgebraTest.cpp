#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "foundation/Mat4f.h"
#include "foundation/Quaternion.h"
#include "foundation/Vec3f.h"

namespace {

struct Counters {
    std::int32_t nVectors = g_nVectorCount;
    std::int32_t nQuaternions = g_nQuaternionCount;
    std::int32_t nMatrices = g_nMatrixCount;
    bool operator==(Counters const&) const = default;
};

void ExpectVector(float x, float y, float z, Vec3f const& v) {
    EXPECT_EQ(x, v.x);
    EXPECT_EQ(y, v.y);
    EXPECT_EQ(z, v.z);
}

void ExpectNear(Vec3f const& expected, Vec3f const& v, float fTolerance) {
    EXPECT_NEAR(expected.x, v.x, fTolerance);
    EXPECT_NEAR(expected.y, v.y, fTolerance);
    EXPECT_NEAR(expected.z, v.z, fTolerance);
}

void ExpectQuaternion(float w, float x, float y, float z, quaternion const& q) {
    EXPECT_EQ(w, q.w);
    ExpectVector(x, y, z, q.v);
}

using Elements = std::array<std::array<float, 4>, 4>;

Mat4f MatrixOf(Elements const& elements) {
    Mat4f result(0.0f);
    for (std::size_t i = 0; i < 4; ++i) {
        for (std::size_t j = 0; j < 4; ++j) result.m[i][j] = elements[i][j];
    }
    return result;
}

void ExpectMatrix(Elements const& expected, Mat4f const& matrix) {
    for (std::size_t i = 0; i < 4; ++i) {
        for (std::size_t j = 0; j < 4; ++j) EXPECT_EQ(expected[i][j], matrix.m[i][j]) << i << ", " << j;
    }
}

constexpr Elements kIdentity = {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};
constexpr Elements kCount = {{{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}, {13, 14, 15, 16}}};

quaternion RandomQuaternion(std::mt19937& random) {
    std::uniform_real_distribution<float> component(-1.0f, 1.0f);
    float const w = component(random);
    float const x = component(random);
    float const y = component(random);
    return quaternion(w, Vec3f(x, y, component(random)));
}

// q p q^-1.
Vec3f Rotated(Vec3f const& p, quaternion const& q) { return (q * quaternion(0.0f, p) / q).v; }

}  // namespace

// ---- Vectors

TEST(FloatAlgebra, NewVectorIsZero) { ExpectVector(0.0f, 0.0f, 0.0f, Vec3f()); }

TEST(FloatAlgebra, VectorArithmeticIsPerComponent) {
    Vec3f const a(1.0f, 2.0f, 3.0f);
    Vec3f const b(4.0f, 6.0f, 9.0f);
    ExpectVector(5.0f, 8.0f, 12.0f, a + b);
    ExpectVector(-3.0f, -4.0f, -6.0f, a - b);
    ExpectVector(-1.0f, -2.0f, -3.0f, -a);
    ExpectVector(2.0f, 4.0f, 6.0f, 2.0f * a);
    ExpectVector(2.0f, 4.0f, 6.0f, a * 2.0f);
    ExpectVector(2.0f, 3.0f, 4.5f, b / 2.0f);
    EXPECT_EQ(43.0f, Dot(a, b));
    ExpectVector(0.0f, 3.0f, -2.0f, Cross(a, b));
}

TEST(FloatAlgebra, DivisionIsNoMultiplicationWithTheReciprocal) {
    float const fDivisor = 41.0f;
    ASSERT_NE(1.0f, fDivisor * (1.0f / fDivisor));
    ExpectVector(1.0f, 2.0f, -1.0f, Vec3f(41.0f, 82.0f, -41.0f) / fDivisor);
    EXPECT_EQ(1.0f, (Mat4f(41.0f) / fDivisor).m[2][3]);
}

TEST(FloatAlgebra, VectorTimesMatrixTakesTheFourthRowAsShift) {
    // The fourth column holds what must not be read.
    float const fNoNumber = std::nanf("");
    Mat4f const matrix = MatrixOf(
        {{{1, 2, 3, fNoNumber}, {5, 6, 7, fNoNumber}, {9, 10, 11, fNoNumber}, {13, 14, 15, fNoNumber}}});
    ExpectVector(1 + 10 + 27 + 13, 2 + 12 + 30 + 14, 3 + 14 + 33 + 15, Vec3f(1.0f, 2.0f, 3.0f) * matrix);
}

TEST(FloatAlgebra, NormalizeDividesByTheLength) {
    Vec3f a(0.0f, 3.0f, 4.0f);
    ExpectVector(0.0f, 0.6f, 0.8f, Normalized(a));
    ExpectVector(0.0f, 3.0f, 4.0f, a);
    a.Normalize();
    ExpectVector(0.0f, 0.6f, 0.8f, a);
}

TEST(FloatAlgebra, NormalizeOfZeroIsNotANumber) {
    Vec3f zero;
    zero.Normalize();
    EXPECT_TRUE(std::isnan(zero.x) && std::isnan(zero.y) && std::isnan(zero.z));
}

TEST(FloatAlgebra, BisectPointsHalfWay) {
    Vec3f const half = Bisect(Vec3f(1.0f, 0.0f, 0.0f), Vec3f(0.0f, 1.0f, 0.0f));
    float const fPart = 1.0f / std::sqrt(2.0f);
    ExpectVector(fPart, fPart, 0.0f, half);
}

TEST(FloatAlgebra, BisectOfOppositeVectorsPointsUp) {
    ExpectVector(0.0f, 0.0f, 1.0f, Bisect(Vec3f(1.0f, 0.0f, 0.0f), Vec3f(-1.0f, 0.0f, 0.0f)));
    // Squared lengths of the sum: 9e-6 and 1.6e-5.
    ExpectVector(0.0f, 0.0f, 1.0f, Bisect(Vec3f(1.0f, 0.003f, 0.0f), Vec3f(-1.0f, 0.0f, 0.0f)));
    ExpectVector(0.0f, 1.0f, 0.0f, Bisect(Vec3f(1.0f, 0.004f, 0.0f), Vec3f(-1.0f, 0.0f, 0.0f)));
}

// ---- Matrices

TEST(FloatAlgebra, MatrixIsSixteenFloats) {
    EXPECT_EQ(16 * sizeof(float), sizeof(Mat4f));
    EXPECT_FALSE(std::is_polymorphic_v<Mat4f>);
    EXPECT_EQ(3 * sizeof(float), sizeof(Vec3f));
}

TEST(FloatAlgebra, MatrixFromAFloatHoldsItSixteenTimes) {
    ExpectMatrix({{{7, 7, 7, 7}, {7, 7, 7, 7}, {7, 7, 7, 7}, {7, 7, 7, 7}}}, Mat4f(7.0f));
}

TEST(FloatAlgebra, CopyModeOneTransposes) {
    Mat4f const a = MatrixOf(kCount);
    ExpectMatrix({{{1, 5, 9, 13}, {2, 6, 10, 14}, {3, 7, 11, 15}, {4, 8, 12, 16}}}, Mat4f(a, 1));
    for (int nMode : {0, 2, -1}) ExpectMatrix(kCount, Mat4f(a, nMode));
    ExpectMatrix(kCount, Mat4f(a));
}

TEST(FloatAlgebra, MatrixProductIsRowByColumn) {
    Mat4f const a = MatrixOf(kCount);
    Mat4f const b = MatrixOf({{{1, 0, 2, 0}, {0, 1, 0, 2}, {1, 1, 0, 0}, {0, 0, 1, 1}}});
    ExpectMatrix({{{4, 5, 6, 8}, {12, 13, 18, 20}, {20, 21, 30, 32}, {28, 29, 42, 44}}}, a * b);
    ExpectMatrix({{{19, 22, 25, 28}, {31, 34, 37, 40}, {6, 8, 10, 12}, {22, 24, 26, 28}}}, b * a);
}

TEST(FloatAlgebra, LeftMatrixActsFirstOnARowVector) {
    Mat4f shift(0.0f);
    shift.Identity();
    shift.m[3][0] = 5.0f;
    Mat4f scale(0.0f);
    scale.m[0][0] = scale.m[1][1] = scale.m[2][2] = 2.0f;
    scale.m[3][3] = 1.0f;
    Vec3f const a(1.0f, 1.0f, 1.0f);
    ExpectVector(12.0f, 2.0f, 2.0f, a * (shift * scale));
    ExpectVector(7.0f, 2.0f, 2.0f, a * (scale * shift));
}

TEST(FloatAlgebra, MatrixArithmeticIsPerElement) {
    Mat4f const a = MatrixOf(kCount);
    ExpectMatrix({{{2, 3, 4, 5}, {6, 7, 8, 9}, {10, 11, 12, 13}, {14, 15, 16, 17}}}, a + Mat4f(1.0f));
    ExpectMatrix({{{0, 1, 2, 3}, {4, 5, 6, 7}, {8, 9, 10, 11}, {12, 13, 14, 15}}}, a - Mat4f(1.0f));
    ExpectMatrix({{{-1, -2, -3, -4}, {-5, -6, -7, -8}, {-9, -10, -11, -12}, {-13, -14, -15, -16}}}, -a);
    Elements const halves = {
        {{0.5f, 1, 1.5f, 2}, {2.5f, 3, 3.5f, 4}, {4.5f, 5, 5.5f, 6}, {6.5f, 7, 7.5f, 8}}};
    ExpectMatrix(halves, a / 2.0f);
    Mat4f inPlace(a);
    EXPECT_EQ(&inPlace, &(inPlace /= 2.0f));
    ExpectMatrix(halves, inPlace);
}

TEST(FloatAlgebra, DivisionOfAMatrixByZeroIsInfiniteOrNotANumber) {
    Mat4f a(1.0f);
    a.m[1][1] = 0.0f;
    a /= 0.0f;
    EXPECT_TRUE(std::isinf(a.m[0][0]));
    EXPECT_TRUE(std::isnan(a.m[1][1]));
}

TEST(FloatAlgebra, IdentityClearsAllElsewhere) {
    Mat4f a(7.0f);
    a.Identity();
    ExpectMatrix(kIdentity, a);
}

// ---- Quaternions

TEST(FloatAlgebra, NewQuaternionIsZero) { ExpectQuaternion(0.0f, 0.0f, 0.0f, 0.0f, quaternion()); }

TEST(FloatAlgebra, QuaternionUnitsMultiplyAsHamiltonSays) {
    quaternion const i(0.0f, Vec3f(1.0f, 0.0f, 0.0f));
    quaternion const j(0.0f, Vec3f(0.0f, 1.0f, 0.0f));
    quaternion const k(0.0f, Vec3f(0.0f, 0.0f, 1.0f));
    EXPECT_EQ(k, i * j);
    EXPECT_EQ(-k, j * i);
    EXPECT_EQ(quaternion(-1.0f, Vec3f()), i * j * k);
}

TEST(FloatAlgebra, QuaternionArithmetic) {
    quaternion const a(1.0f, Vec3f(2.0f, 3.0f, 4.0f));
    quaternion const b(5.0f, Vec3f(6.0f, 7.0f, 8.0f));
    // w = 5 - (12 + 21 + 32); v = (24 - 28, 24 - 16, 14 - 18) + (6, 7, 8) + 5 * (2, 3, 4).
    ExpectQuaternion(-60.0f, 12.0f, 30.0f, 24.0f, a * b);
    ExpectQuaternion(6.0f, 8.0f, 10.0f, 12.0f, a + b);
    ExpectQuaternion(-4.0f, -4.0f, -4.0f, -4.0f, a - b);
    ExpectQuaternion(-1.0f, -2.0f, -3.0f, -4.0f, -a);
    ExpectQuaternion(2.0f, 4.0f, 6.0f, 8.0f, a * 2.0f);
    ExpectQuaternion(2.0f, 4.0f, 6.0f, 8.0f, 2.0f * a);
    EXPECT_EQ(30.0f, SquaredNorm(a));
}

TEST(FloatAlgebra, InverseIsTheConjugateOverTheSquaredNorm) {
    quaternion const a(1.0f, Vec3f(1.0f, -1.0f, 1.0f));
    ExpectQuaternion(0.25f, -0.25f, 0.25f, -0.25f, Inverse(a));
    ExpectQuaternion(1.0f, 0.0f, 0.0f, 0.0f, a * Inverse(a));
}

TEST(FloatAlgebra, QuotientIsTheProductWithTheInverse) {
    quaternion const a(1.0f, Vec3f(2.0f, 3.0f, 4.0f));
    quaternion const b(1.0f, Vec3f(1.0f, -1.0f, 1.0f));
    EXPECT_EQ(a * Inverse(b), a / b);
    ExpectQuaternion(1.0f, 0.0f, 0.0f, 0.0f, b / b);
}

TEST(FloatAlgebra, QuaternionsAreEqualWhenAllFourComponentsAre) {
    quaternion const a(1.0f, Vec3f(2.0f, 3.0f, 4.0f));
    EXPECT_TRUE(a == quaternion(1.0f, Vec3f(2.0f, 3.0f, 4.0f)));
    EXPECT_FALSE(a != quaternion(1.0f, Vec3f(2.0f, 3.0f, 4.0f)));
    for (quaternion const& other :
         {quaternion(1.5f, a.v), quaternion(1.0f, Vec3f(2.5f, 3.0f, 4.0f)),
          quaternion(1.0f, Vec3f(2.0f, 3.5f, 4.0f)), quaternion(1.0f, Vec3f(2.0f, 3.0f, 4.5f))}) {
        EXPECT_FALSE(a == other);
        EXPECT_TRUE(a != other);
    }
    quaternion const noNumber(std::nanf(""), Vec3f());
    EXPECT_FALSE(noNumber == noNumber);
    EXPECT_TRUE(noNumber != noNumber);
}

TEST(FloatAlgebra, InPlaceFormsGiveWhatTheOperatorsGive) {
    std::mt19937 random(3);
    for (int n = 0; n < 100; ++n) {
        quaternion const a = RandomQuaternion(random);
        quaternion const b = RandomQuaternion(random);
        quaternion q(a);
        EXPECT_EQ(&q, &(q *= b));
        EXPECT_EQ(a * b, q);
        q = a;
        EXPECT_EQ(a + b, q += b);
        q = a;
        EXPECT_EQ(a - b, q -= b);
        q = a;
        EXPECT_EQ(a * 3.0f, q *= 3.0f);
        q = a;
        EXPECT_EQ(a / b, q /= b);
        q = a;
        q.Negate();
        EXPECT_EQ(-a, q);
        q = a;
        q.Invert();
        EXPECT_EQ(Inverse(a), q);
        q = a;
        q.Normalize();
        EXPECT_EQ(Normalized(a), q);
    }
}

TEST(FloatAlgebra, InPlaceFormsMayTakeTheObjectItself) {
    quaternion const a(1.0f, Vec3f(2.0f, 3.0f, 4.0f));
    quaternion q(a);
    quaternion const& self = q;
    q *= self;
    EXPECT_EQ(a * a, q);
    q = a;
    q /= self;
    EXPECT_EQ(a / a, q);
    q = a;
    q -= self;
    EXPECT_EQ(quaternion(), q);
}

TEST(FloatAlgebra, NormalizeDividesAllFourByTheNorm) {
    quaternion q(2.0f, Vec3f(4.0f, 5.0f, 6.0f));  // norm 9
    q.Normalize();
    ExpectQuaternion(2.0f / 9.0f, 4.0f / 9.0f, 5.0f / 9.0f, 6.0f / 9.0f, q);
}

TEST(FloatAlgebra, ZeroQuaternionHasNoInverseAndNoDirection) {
    quaternion const zero;
    EXPECT_TRUE(std::isnan(Inverse(zero).w));
    EXPECT_TRUE(std::isnan(Normalized(zero).w));
    EXPECT_TRUE(std::isnan(unitquaternion(zero).w));
}

TEST(FloatAlgebra, ZeroQuaternionGivesTheIdentity) { ExpectMatrix(kIdentity, quaternion().ToMatrix()); }

TEST(FloatAlgebra, UnitQuaternionNormalizesItsValue) {
    unitquaternion const u(quaternion(2.0f, Vec3f(4.0f, 5.0f, 6.0f)));
    ExpectQuaternion(2.0f / 9.0f, 4.0f / 9.0f, 5.0f / 9.0f, 6.0f / 9.0f, u);
    EXPECT_EQ(sizeof(quaternion), sizeof(unitquaternion));
}

TEST(FloatAlgebra, QuarterTurnAboutZTakesXToY) {
    float const fHalf = std::sqrt(0.5f);
    quaternion const q(fHalf, Vec3f(0.0f, 0.0f, fHalf));
    ExpectNear(Vec3f(0.0f, 1.0f, 0.0f), Vec3f(1.0f, 0.0f, 0.0f) * q.ToMatrix(), 1e-6f);
    ExpectNear(Vec3f(-1.0f, 0.0f, 0.0f), Vec3f(0.0f, 1.0f, 0.0f) * q.ToMatrix(), 1e-6f);
    // Twice the quaternion is the same rotation.
    ExpectNear(Vec3f(0.0f, 1.0f, 0.0f), Vec3f(1.0f, 0.0f, 0.0f) * (2.0f * q).ToMatrix(), 1e-6f);
}

TEST(FloatAlgebra, MatrixRotatesRowVectorsAsTheQuaternionDoes) {
    std::mt19937 random(11);
    for (int n = 0; n < 200; ++n) {
        quaternion const q = RandomQuaternion(random);
        if (SquaredNorm(q) < 0.1f) continue;
        unitquaternion const u(q);
        Vec3f const p = RandomQuaternion(random).v;
        ExpectNear(Rotated(p, q), p * q.ToMatrix(), 1e-5f);
        ExpectNear(Rotated(p, q), p * u.ToMatrix(), 1e-5f);
        Mat4f const matrix = q.ToMatrix();
        ExpectVector(0.0f, 0.0f, 0.0f, Vec3f(matrix.m[3][0], matrix.m[3][1], matrix.m[3][2]));
        ExpectVector(0.0f, 0.0f, 0.0f, Vec3f(matrix.m[0][3], matrix.m[1][3], matrix.m[2][3]));
        EXPECT_EQ(1.0f, matrix.m[3][3]);
    }
}

TEST(FloatAlgebra, ProductOfQuaternionsTurnsByTheRightOneFirst) {
    std::mt19937 random(12);
    for (int n = 0; n < 50; ++n) {
        unitquaternion const a(RandomQuaternion(random));
        unitquaternion const b(RandomQuaternion(random));
        Vec3f const p = RandomQuaternion(random).v;
        ExpectNear(p * b.ToMatrix() * a.ToMatrix(), p * (a * b).ToMatrix(), 1e-5f);
    }
}

TEST(FloatAlgebra, ToMatrixIsChosenByTheObjectNotByTheReference) {
    unitquaternion u(quaternion(1.0f, Vec3f()));
    u.v.x = 1.0f;  // no unit any more: only the unit form, which does not look at the norm, shows it
    quaternion const& q = u;
    EXPECT_EQ(1.0f - 2.0f, q.ToMatrix().m[1][1]);
    EXPECT_EQ(1.0f - 1.0f, quaternion(u).ToMatrix().m[1][1]);
}

// ---- Counters

TEST(FloatAlgebra, CountersFollowTheObjectsAlive) {
    Counters const before;
    {
        Vec3f const v;
        EXPECT_EQ(before.nVectors + 1, g_nVectorCount);
        Mat4f const m(0.0f);
        EXPECT_EQ(before.nMatrices + 1, g_nMatrixCount);
        Mat4f const transposed(m, 1);
        EXPECT_EQ(before.nMatrices + 2, g_nMatrixCount);
        quaternion const q(1.0f, v);
        EXPECT_EQ(before.nQuaternions + 1, g_nQuaternionCount);
        EXPECT_EQ(before.nVectors + 2, g_nVectorCount);
        unitquaternion const u(q);
        EXPECT_EQ(before.nQuaternions + 2, g_nQuaternionCount);
        EXPECT_EQ(before.nVectors + 3, g_nVectorCount);
    }
    EXPECT_EQ(before, Counters());
}

TEST(FloatAlgebra, CountersReturnToTheirValueWhenAllTemporariesAreGone) {
    Counters const before;
    std::mt19937 random(4);
    for (int n = 0; n < 20; ++n) {
        quaternion q = RandomQuaternion(random) * RandomQuaternion(random) + 2.0f * RandomQuaternion(random);
        q *= q;
        q /= -q - RandomQuaternion(random);
        q += Inverse(q) * 0.5f;
        q.Normalize();
        q.Negate();
        q.Invert();
        Vec3f v = Bisect(q.v, Cross(q.v, Vec3f(1.0f, 0.0f, 0.0f))) - 2.0f * (q.v / 3.0f);
        v.Normalize();
        Mat4f m = unitquaternion(q).ToMatrix() * q.ToMatrix() - Mat4f(q.ToMatrix(), 1) / 2.0f;
        m /= 2.0f;
        m.Identity();
        v = Normalized(v * (m + -m));
    }
    EXPECT_EQ(before, Counters());
}

TEST(FloatAlgebra, CountersAgreeAfterCopiesMovesAndSwaps) {
    Counters const before;
    {
        std::vector<quaternion> quaternions(10);
        quaternions.resize(100);
        quaternions.erase(quaternions.begin() + 3, quaternions.begin() + 50);
        std::swap(quaternions[0], quaternions[1]);
        quaternion const moved(std::move(quaternions[2]));
        quaternions[0] = std::move(quaternions[3]);
        std::vector<Mat4f> matrices(7, Mat4f(1.0f));
        matrices.insert(matrices.begin(), matrices[3]);
        Mat4f movedMatrix(std::move(matrices[1]));
        movedMatrix = std::move(matrices[2]);
        unitquaternion u(quaternion(1.0f, Vec3f()));
        unitquaternion copy(u);
        copy = std::move(u);
        EXPECT_EQ(before.nQuaternions + 53 + 1 + 2, g_nQuaternionCount);
        EXPECT_EQ(before.nVectors + 53 + 1 + 2, g_nVectorCount);
        EXPECT_EQ(before.nMatrices + 8 + 1, g_nMatrixCount);
    }
    EXPECT_EQ(before, Counters());
}

TEST(FloatAlgebra, CountersDoNotLoseCountsBetweenThreads) {
    Counters const before;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([] {
            quaternion q(1.0f, Vec3f(0.1f, 0.2f, 0.3f));
            for (int n = 0; n < 5000; ++n) {
                q = Normalized(q * q + q);
                Mat4f const m = q.ToMatrix() * q.ToMatrix();
                q.v = q.v * m;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(before, Counters());
}
