// The trees of vertices and points.

#include <vector>

#include "selfcheck/Record.h"

namespace selfcheck {

namespace {

// Every node with its place, without recursion.
template <class Node, class Take>
void Walk(Node* root, Take const& take) {
    std::vector<Node*> open{root};
    while (!open.empty()) {
        Node* const node = open.back();
        open.pop_back();
        if (node == nullptr) continue;
        take(*node);
        open.push_back(node->m_pRight);
        open.push_back(node->m_pLeft);
    }
}

void AddTree(Record& record, CVertexTree& tree) {
    record.AddAll(tree.m_nCount, tree.m_BoundBox.m_ptMin, tree.m_BoundBox.m_ptMax);
    Walk(tree.m_pRoot, [&record](tagVertexNode& node) {
        record.AddAll(static_cast<CPoint3D const&>(node), node.m_nBalance, node.m_nIndex, node.m_nID);
    });
}

}  // namespace

void CheckTrees(Record& record, std::filesystem::path const& folder) {
    record.BeginRoom("trees");
    Chance chance(2);
    CVertexTree tree;
    for (int i = 0; i < 3000; ++i) {
        CPoint3D point = chance.Point3();
        if (i % 3 == 0) point = CPoint3D{chance.OnLattice(), chance.OnLattice(), point.z};
        if (i % 5 == 0) point.z = static_cast<double>(i % 50);
        record.Add(tree.AddNode(point)->m_nIndex);
    }
    AddTree(record, tree);
    double matrix[4][4] = {
        {0.7, 0.1, -0.3, 0.0}, {0.2, -0.9, 0.4, 0.0}, {0.5, 0.3, 1.1, 0.0}, {3.3, -1.7, 0.9, 1.0}};
    CBoundBox3D const box = tree.GetBoundBox(matrix);
    record.AddAll(box.m_ptMin, box.m_ptMax);
    tree.Transform(matrix);
    double offset[3] = {1.0, -2.5, 0.3};
    tree.Transfer(offset);
    tree.SetPointID(5);
    AddTree(record, tree);
    for (int mode = 1; mode <= 3; ++mode) {
        tree.ExchangeXYZ(mode);
        AddTree(record, tree);
    }
    OpenFile file(folder / "points");
    unsigned counter = 1;
    tree.SavePoint(file, counter);
    std::string const bytes = file.Bytes();
    record.AddAll(counter, std::string_view(bytes));

    CPointTree points;
    for (int i = 0; i < 1000; ++i) {
        CPoint2D point = i % 4 == 0 ? CPoint2D(1.0, 2.0) : chance.Point2();
        record.Add(*points.AddNode(point));
    }
    double turn[3][3] = {{0.7, 0.1, 0.0}, {0.2, -0.9, 0.0}, {5.0, 3.0, 1.0}};
    points.Transform(turn);
    points.Transfer(offset);
    Walk(points.m_pRoot, [&record](tagPointNode& node) {
        record.AddAll(static_cast<CPoint2D const&>(node), node.m_nBalance);
    });
}

}  // namespace selfcheck
