#pragma once

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "foundation/Point.h"

/// Random points of the kinds that decide something in the vertex tree.
class PointSoup {
public:
    enum Kind {
        kHalfTolerance,   ///< a small lattice in steps of half the tolerance
        kWholeTolerance,  ///< a lattice in steps of exactly the tolerance
        kWholeNumbers,    ///< a grid, as of a mesh: exact repetitions
        kNearHeights,     ///< a grid whose heights differ by less than the tolerance
        kNearRows,        ///< a grid whose y differ by less than the tolerance
        kNearColumns,     ///< a grid whose x differ by less than the tolerance
        kNearEverything,  ///< a grid with all three
        kAnywhere,        ///< no two alike
        kWithoutNumbers,  ///< some coordinates are not numbers, some zeros are negative
        kManyHeights,     ///< few places in plan, thousands of heights, some within the tolerance of another
        kNearlyNumbers,   ///< kWholeNumbers in which a point that is not a number is rare
        kKinds
    };

    PointSoup(unsigned nSeed, Kind kind) : m_Random(nSeed), m_Kind(kind) {}

    CPoint3D Next() {
        switch (m_Kind) {
            case kHalfTolerance:
                return Lattice(0.00005, 6);
            case kWholeTolerance:
                return Lattice(0.0001, 5);
            case kWholeNumbers:
                return WithSigns(Lattice(1.0, 6));
            case kNearHeights:
                return Jittered(false, false, true);
            case kNearRows:
                return Jittered(false, true, false);
            case kNearColumns:
                return Jittered(true, false, false);
            case kNearEverything:
                return Jittered(true, true, true);
            case kManyHeights: {
                CPoint3D const p = WithSigns(Lattice(0.5, 3));
                return CPoint3D(p.x, p.y, (static_cast<double>(Below(4000)) - 2000.0) * 0.00025 + Jitter());
            }
            case kAnywhere:
                return CPoint3D(Uniform(), Uniform(), Uniform());
            case kWithoutNumbers:
                return WithNaN(WithSigns(Lattice(0.5, 4)), 12);
            default:
                return WithNaN(WithSigns(Lattice(1.0, 6)), 300);
        }
    }

    unsigned Below(unsigned n) { return static_cast<unsigned>(m_Random() % n); }

private:
    double Uniform() { return std::uniform_real_distribution<double>(-50.0, 50.0)(m_Random); }
    double Step(double dStep, unsigned nSteps) { return Below(nSteps) * dStep; }
    double Jitter() { return (static_cast<double>(Below(7)) - 3.0) * 0.00003; }

    CPoint3D Lattice(double dStep, unsigned nSteps) {
        double const x = Step(dStep, nSteps);
        double const y = Step(dStep, nSteps);
        return CPoint3D(x, y, Step(dStep, nSteps));
    }

    CPoint3D Jittered(bool bX, bool bY, bool bZ) {
        CPoint3D p = WithSigns(Lattice(1.0, 5));
        if (bX) p.x += Jitter();
        if (bY) p.y += Jitter();
        if (bZ) p.z += Jitter();
        return p;
    }

    CPoint3D WithSigns(CPoint3D p) {
        for (double* const pValue : {&p.x, &p.y, &p.z}) {
            if (Below(2) == 0) *pValue = -*pValue;
        }
        return p;
    }

    CPoint3D WithNaN(CPoint3D p, unsigned nOneIn) {
        for (double* const pValue : {&p.x, &p.y, &p.z}) {
            if (Below(nOneIn) == 0) *pValue = std::numeric_limits<double>::quiet_NaN();
        }
        return p;
    }

    std::mt19937 m_Random;
    Kind m_Kind;
};
