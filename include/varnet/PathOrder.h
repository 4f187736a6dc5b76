#pragma once

#include <cstdint>
#include <memory>

#include "varnet/Export.h"
#include "varnet/Geometry.h"
#include "varnet/Layer.h"

namespace varnet {

/// What is printed next.
enum class NextPath {
    kNearest,   ///< the one that begins or ends nearest to where the head is
    kFarthest,  ///< the one farthest away, which spreads the heat
    kRandom     ///< any, by the generator of the C runtime, which the process shares
};

/// How the paths of a layer are put in order.
struct OrderSettings {
    /// Contours are opened where fill passes, and both printed in one stroke. Without it contours come first,
    /// then fill.
    bool splice = false;
    NextPath contours = NextPath::kNearest;  ///< where contours are not spliced
    NextPath fill = NextPath::kNearest;      ///< where contours are not spliced
    double width = 0.5;  ///< of a stroke, mm: contours link with fill within 1.8 times this
    double cut = 0.0;    ///< mm: the opening of a contour, and what is cut off at the end of a path
    Point2 start;        ///< where the head is at first
    unsigned seed = 1;   ///< of the random order
};

/// The way of the head with the material off.
struct Travel {
    double length = 0.0;  ///< millimetres
    /// How often the material is switched on: once for each contour and each chain, and in a chain for each
    /// stroke that does not begin where the last one ended.
    std::int64_t starts = 0;
};

/// Adds what the head travels in a layer, as it stands; the head moves from where it is to where the layer
/// ends.
VARNET_KIT_API void AddTravel(Layer const& layer, Point2& head, Travel& travel);

/// Puts the paths of layer after layer in order; the head goes on from where the last layer left it.
///
/// Contours that are ordered lose their parents, not their levels. A closed contour begins where the head
/// enters it.
class VARNET_KIT_API PathOrder {
public:
    /// Throws Error of kind kArgument for lengths that are negative or not finite.
    explicit PathOrder(OrderSettings const& settings = {});

    void Order(Layer& layer);

    /// Where the head is.
    Point2 Head() const { return m_Head; }
    /// Of the layers as they came, and as they went.
    Travel const& Before() const { return m_Before; }
    Travel const& After() const { return m_After; }

private:
    OrderSettings m_Settings;
    Point2 m_Head;
    Point2 m_HeadBefore;
    Travel m_Before;
    Travel m_After;
};

}  // namespace varnet
