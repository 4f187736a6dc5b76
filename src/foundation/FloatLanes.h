#pragma once

#include "foundation/Float3.h"

// Float3 in the lanes of one register, where the processor has such: each number by the same operations in
// the same order, so that results are the same bit for bit.

#if defined(__SSE2__)

#include <emmintrin.h>

namespace varnet {

struct FloatLanes {
    __m128 lanes;  // x, y, z and 0
};

namespace float_lanes {

// y, z, x.
inline __m128 Turned(__m128 v) { return _mm_shuffle_ps(v, v, _MM_SHUFFLE(3, 0, 2, 1)); }

}  // namespace float_lanes

template <class Point>
FloatLanes ToFloatLanes(Point const& point) {
    __m128 const xy = _mm_cvtpd_ps(_mm_set_pd(point.y, point.x));
    __m128 const z = _mm_cvtsd_ss(_mm_setzero_ps(), _mm_set_sd(point.z));
    return {_mm_movelh_ps(xy, z)};
}

inline FloatLanes ToFloatLanes(float const (&normal)[3]) {
    return {_mm_setr_ps(normal[0], normal[1], normal[2], 0.0f)};
}

inline float Dot(FloatLanes const& a, FloatLanes const& b) {
    __m128 const products = _mm_mul_ps(a.lanes, b.lanes);
    __m128 const turned = float_lanes::Turned(products);
    __m128 const xy = _mm_add_ss(products, turned);
    return _mm_cvtss_f32(_mm_add_ss(xy, float_lanes::Turned(turned)));
}

inline FloatLanes Sum(FloatLanes const& a, FloatLanes const& b) { return {_mm_add_ps(a.lanes, b.lanes)}; }

// The differences come out as z, x, y and are turned into place.
inline FloatLanes Cross(FloatLanes const& a, FloatLanes const& b) {
    using float_lanes::Turned;
    __m128 const zxy = _mm_sub_ps(_mm_mul_ps(a.lanes, Turned(b.lanes)), _mm_mul_ps(Turned(a.lanes), b.lanes));
    return {Turned(zxy)};
}

}  // namespace varnet

#else

namespace varnet {

using FloatLanes = Float3;

template <class Point>
FloatLanes ToFloatLanes(Point const& point) {
    return ToFloat3(point);
}

}  // namespace varnet

#endif
