#pragma once

#include "cli/FileWindow.h"
#include "contours/Layer.h"
#include "foundation/files/ByteStream.h"

namespace varnet {

// One layer in a slice file: as lines of text, or as binary commands, plain or disguised.

/// How the reading of a layer ended. It is whole when it ended at the next layer's command or with the file,
/// rather than at something that is no command or at a command cut short.
struct LayerEnd {
    int nResult;
    bool bWhole;
};

/// Adds the lines of one layer to it, and grows its box by their points. The file then stands behind the last
/// line that had an effect: at the next layer's line, at a line that is no command, or at lines without
/// effect ahead of these; or at its end. 1 when a layer's line was met, also where something else ended it,
/// else 0.
LayerEnd ReadTextLayer(FileWindow& file, CLayer& layer);

/// Adds the commands of one layer to it, and refreshes its box. The file then stands at the next layer's
/// command. 1 when a layer's command was met.
///
/// A word that is no command, behind which the file then stands, and a command that the file does not hold
/// whole, with the file then at its end, give 0, and the box stays; commands before them have been added.
LayerEnd ReadBinaryLayer(FileWindow& file, CLayer& layer, bool bDisguised);

/// Writes the layer: its raw loops with all below them, and the hatches that have edges.
void WriteTextLayer(ByteWriter& file, CLayer const& layer);

/// Writes a loop and, each before its children, all below it. Nothing of a loop without points, nor of what
/// is below it.
void WriteTextTree(ByteWriter& file, tagLoopTreeNode& root);

/// Writes the layer with all its loops and hatches, after building its loop list. A disguise takes its
/// offsets and noise from rand().
void WriteBinaryLayer(ByteWriter& file, CLayer& layer, bool bDisguised);

}  // namespace varnet
