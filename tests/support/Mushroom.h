#pragma once

#include "Shapes.h"

/// A table top from z = 5 to 6 over a post that stands in its middle. The underside has 72 square
/// millimetres, and leans on the post; the foot has 9.
inline shapes::Mesh Mushroom() {
    shapes::Mesh mesh;
    auto const quad = [&mesh](shapes::Corner a, shapes::Corner b, shapes::Corner c, shapes::Corner d) {
        mesh.push_back({a, b, c});
        mesh.push_back({a, c, d});
    };
    float const o[4][2] = {{0, 0}, {9, 0}, {9, 9}, {0, 9}};
    float const i[4][2] = {{3, 3}, {6, 3}, {6, 6}, {3, 6}};
    for (int k = 0; k < 4; ++k) {
        int const n = (k + 1) % 4;
        shapes::Corner const o0{o[k][0], o[k][1], 5}, o1{o[n][0], o[n][1], 5};
        shapes::Corner const t0{o[k][0], o[k][1], 6}, t1{o[n][0], o[n][1], 6};
        shapes::Corner const i0{i[k][0], i[k][1], 5}, i1{i[n][0], i[n][1], 5};
        shapes::Corner const b0{i[k][0], i[k][1], 0}, b1{i[n][0], i[n][1], 0};
        quad(o0, o1, t1, t0);  // the top's side
        quad(o1, o0, i0, i1);  // its underside, facing down
        quad(b0, b1, i1, i0);  // the post's side
    }
    quad({0, 0, 6}, {9, 0, 6}, {9, 9, 6}, {0, 9, 6});
    quad({3, 3, 0}, {3, 6, 0}, {6, 6, 0}, {6, 3, 0});
    return mesh;
}

/// A bar of length 4 with a sharp line along x below, at z = 0: its two sides face down, 60 degrees from
/// straight down.
inline shapes::Mesh Keel() {
    float const z = 1.7320508f;
    shapes::Corner const k0{0, 0, 0}, k1{4, 0, 0}, l0{0, 1, z}, l1{4, 1, z}, r0{0, -1, z}, r1{4, -1, z};
    return {{k0, l1, k1}, {k0, l0, l1}, {k0, k1, r1}, {k0, r1, r0},
            {l0, r0, r1}, {l0, r1, l1}, {k0, r0, l0}, {k1, l1, r1}};
}
