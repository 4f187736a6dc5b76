// Values, lists and geometry.

#include <array>
#include <iterator>

#include "selfcheck/Record.h"

namespace selfcheck {

namespace {

void AddContainers(Record& record, Chance& chance) {
    XR_CList<CPoint2D, CPoint2D&> list(4);
    XR_CArray<double, double> array;
    for (int i = 0; i < 40; ++i) {
        CPoint2D point = chance.Point2();
        if (i % 3 == 0) {
            list.AddHead(point);
        } else {
            list.AddTail(point);
        }
        array.InsertAt(i / 2, point.x);
    }
    array.RemoveAt(3, 5);
    array.SetAtGrow(50, 1.0);
    XR__POSITION* position = list.FindIndex(7);
    list.RemoveAt(position);
    for (position = list.GetHeadPosition(); position != nullptr;) record.Add(list.GetNext(position));
    record.AddAll(array.GetSize(), array.m_nMaxSize);
    for (int i = 0; i < array.GetSize(); ++i) record.Add(array[i]);
}

void AddBoxes(Record& record, Chance& chance) {
    CBoundBox2D flat;
    CBoundBox3D box;
    record.AddAll(flat.IsValid(), box.IsValid(), flat.Size(), box.Size());
    for (int i = 0; i < 100; ++i) {
        CPoint2D p = chance.Point2();
        CPoint3D const q = chance.Point3();
        record.AddAll(flat.IsInBox(p), flat.IsInBox2(p));
        CBoundBox2D const before = flat;
        CBoundBox3D const before3 = box;
        flat += p;
        box += q;
        record.AddAll(BoxRelation(before, flat), BoxRelation(before3, box));
    }
    for (int i = 0; i < 100; ++i) {
        CPoint2D p = chance.Point2() * 2.0;
        record.Add(flat.LimitPointInBox(p));
        record.Add(p);
    }
    record.AddAll(flat.Center(), flat.Size(), box.Center(), box.Size());
}

void AddTable(Record& record, Chance& chance) {
    C2DCompTable table;
    table.SetRowColandBox(9, 9, -100.0, 100.0, -80.0, 90.0);
    for (unsigned row = 0; row < 9; ++row) {
        for (unsigned column = 0; column < 9; ++column) table.SetPoint(chance(), row, column);
    }
    record.Add(table.GetPoint(4, 5));
    for (int i = 0; i < 200; ++i) {
        CPoint2D const p = chance.Point2();
        record.Add(table.CalComp(p.x, p.y));
    }
}

void Add(Record& record, Vec3f const& v) { record.AddAll(v.x, v.y, v.z); }

void Add(Record& record, Mat4f const& matrix) {
    for (auto const& row : matrix.m) {
        for (float const f : row) record.Add(f);
    }
}

void Add(Record& record, quaternion const& q) {
    record.Add(q.w);
    Add(record, q.v);
}

void AddFloatAlgebra(Record& record, Chance& chance) {
    auto const vector = [&chance] {
        CPoint3D const p = chance.Point3();
        return Vec3f(static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z));
    };
    for (int i = 0; i < 100; ++i) {
        Vec3f const a = vector();
        Vec3f const b = vector();
        float const f = static_cast<float>(chance());
        for (Vec3f const& v : {Cross(a, b), a + b, a - b, -a, f * a, a / f, Normalized(a), Bisect(a, b)})
            Add(record, v);
        record.Add(Dot(a, b));
        quaternion const q(f, a);
        quaternion const p(static_cast<float>(chance()), b);
        for (quaternion const& r : {q * p, q + p, q - p, -q, q * f, q / p, Inverse(q), Normalized(p)})
            Add(record, r);
        record.AddAll(SquaredNorm(q), q == p ? 1 : 0);
        Mat4f const m = q.ToMatrix();
        Mat4f const n = unitquaternion(p).ToMatrix();
        for (Mat4f const& r : {m * n, m + n, m - n, -m, m / f, Mat4f(m, 1)}) Add(record, r);
        Add(record, a * m);
    }
}

// What is computed by sums, products, quotients and square roots alone.
void AddExactGeometry(Record& record, Chance& chance) {
    for (int i = 0; i < 300; ++i) {
        std::array<CPoint2D, 4> p;
        std::array<CPoint3D, 4> q;
        for (CPoint2D& point : p)
            point = i % 4 == 0 ? CPoint2D{chance.OnLattice(), chance.OnLattice()} : chance.Point2();
        for (CPoint3D& point : q) point = chance.Point3();
        record.AddAll(Cross(p[0], p[1]), D2ofPtoP(p[0], p[1]), D2ofPtoP(q[0], q[1]),
                      SideofLine(p[0], p[1], p[2]));
        record.AddAll(D2ofPtoLine(p[0], p[1], p[2]), CalMinD2ofPtoLine(p[0], p[1], p[2]),
                      DisofPtoLine(q[0], q[1], q[2]));
        record.AddAll(DisofPtoPlaneWithSign(q[0], q[1], q[2], q[3]), DisofPtoPlane(q[0], q[1], q[2], q[3]));
        record.AddAll(CalArea(q[0], q[1], q[2]), CalCircumRadius(p[0], p[1], p[2]),
                      CalCircumRadius(q[0], q[1], q[2]));
        CPoint2D meeting;
        record.Add(LineIntersect(p[0], p[1], p[2], p[3], &meeting));
        record.AddAll(meeting, IsInterSect(p[0], p[1], p[2], p[3]), IsInTriangle(p[0], p[1], p[2], p[3]));
        record.Add(ExtendLine(&p[0], &p[1], chance(), i % 2));
    }
    double m[3][3] = {{0.7, 0.1, 0.0}, {0.2, -0.9, 0.0}, {5.0, 3.0, 1.0}};
    double n[3][3] = {{1.7, 0.3, 0.0}, {-0.2, 0.9, 0.0}, {-5.0, 1.0, 1.0}};
    MultiMatrix(m, n);
    for (auto const& row : m) {
        for (double const d : row) record.Add(d);
    }
}

void AddAngles(Record& record, Chance& chance) {
    std::array<double, 7> sums{};
    for (int i = 0; i < 300; ++i) {
        CPoint2D a = chance.Point2();
        CPoint2D b = chance.Point2();
        std::array<CPoint3D, 4> q;
        for (CPoint3D& point : q) point = chance.Point3();
        sums[0] += CalAngleRad(a, b) + CalAngleRad(a);
        sums[1] += CalAngleDeg(a, b) + CalAngleDeg(b);
        sums[2] += CalAngleChange(CalAngleDeg(a), CalAngleDeg(b));
        sums[3] += CalAngle(q[0], q[1], q[2], q[3]);
        CPoint2D const turned = ExtendLineWithAngle(&a, &b, 3.0, 0.7, i % 2);
        sums[4] += turned.x + 2.0 * turned.y;
        CPoint2D const arc = ExtendArc(&a, &b, 200.0, 10.0);
        sums[5] += arc.x + 2.0 * arc.y;
    }
    char const* const names[] = {"CalAngleRad", "CalAngleDeg",         "CalAngleChange",
                                 "CalAngle",    "ExtendLineWithAngle", "ExtendArc"};
    for (std::size_t i = 0; i < std::size(names); ++i) record.AddApart(names[i], sums[i]);
}

}  // namespace

void CheckFoundation(Record& record) {
    record.BeginRoom("foundation");
    Chance chance(1);
    AddContainers(record, chance);
    AddBoxes(record, chance);
    AddTable(record, chance);
    AddFloatAlgebra(record, chance);
    AddExactGeometry(record, chance);
    AddAngles(record, chance);
}

}  // namespace selfcheck
