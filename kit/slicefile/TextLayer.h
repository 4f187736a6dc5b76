#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "slicefile/Lines.h"
#include "slicefile/Words.h"
#include "varnet/Layer.h"
#include "varnet/SliceFile.h"

namespace varnet {

/// What a line of the geometry is.
enum class TextLine {
    kBlank,
    kComment,
    kLayer,
    kPolyline,
    kHatches,
    kGeometryStart,
    kGeometryEnd,
    kNumbers,
    kUnknown
};

/// The kind of a line, and the line without comments.
TextLine KindOf(std::string_view& text);

/// Puts a layer together from its lines. Numbers on a line of their own go on with the command before.
class TextLayerParser {
public:
    TextLayerParser(std::filesystem::path const& file, double units) : m_File(file), m_Units(units) {}

    /// Takes a line of the layer, the one with its height first. Throws Error::AtLine for one that cannot be
    /// read.
    void Take(Line const& line);
    /// Ends the layer and gives it. Of a cut file, the last path may have fewer points than announced: that
    /// is an error.
    Layer Finish(bool isCut);
    std::int64_t WrongCounts() const { return m_WrongCounts; }

private:
    void Begin(TextLine kind, std::string_view parameters, Line const& line);
    void TakeNumbers(NumberScanner& numbers, Line const& line);
    void EndCommand(bool isCut);

    std::filesystem::path m_File;
    double m_Units;
    Layer m_Layer;
    std::optional<SliceCommand> m_Command;
    std::uint64_t m_CommandLine = 0;
    std::int64_t m_Id = 0;
    std::int64_t m_Direction = 0;
    std::int64_t m_Announced = 0;
    std::vector<double> m_Numbers;
    std::int64_t m_WrongCounts = 0;
};

/// Adds a path as a file states it: the direction tells whether it is closed and how it runs.
void AddPath(Layer& layer, std::vector<Point2>& points, std::int64_t id, std::int64_t direction);

}  // namespace varnet
