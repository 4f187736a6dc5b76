#pragma once

#include <cstdint>
#include <cstdio>

#include "contours/Layer.h"
#include "foundation/BoundBox.h"
#include "foundation/Export.h"
#include "foundation/List.h"

/// The ordered stack of layers of a sliced model, and what goes with it in a CLI slice file. Millimetres.
///
/// In memory (m_bInMemory not 0) the layers are in m_LayerList. On disk (m_bInMemory 0) they stay in the open
/// file m_pFile at the places of m_OffsetList, and the head of m_LayerList is the buffer layer, which every
/// access fills anew: a layer got earlier changes with it. The host sets this up: it opens the file, calls
/// ReadCLIHead, appends the offset of each layer, clears m_bInMemory, and adds one layer as the buffer. An
/// offset is where the file stands ahead of a call of CLayer::ReadCLIFile that gives 1. Offsets are taken as
/// unsigned, so that a file may have 4 GiB.
///
/// Files are opened by the host so that bytes come as they are ("rb"), and closed by it.
///
/// The model owns the layers of m_LayerList. Layers are numbered from 1; positions are those of the list in
/// use. Copies are shallow, field by field: both models then share layers and nodes, and only one of them may
/// release them. A model belongs to one thread at a time.
class VARNET_API CLayerModel {
public:
    CLayerModel();
    CLayerModel(CLayerModel const&) = default;
    CLayerModel& operator=(CLayerModel const&) = default;
    /// ReleaseAllLayer.
    virtual ~CLayerModel();

    // ---- the stack: src/cli/LayerModel.cpp

    /// Adds a layer, which the model owns from here on, and grows m_BoundBox by the corners of the layer's
    /// m_Box, as it stands, at the layer's height. Gives its position in m_LayerList.
    XR__POSITION* AddHeadLayer(CLayer* pLayer);
    XR__POSITION* AddTailLayer(CLayer* pLayer);
    /// The same before a position of m_LayerList; null means at the head.
    XR__POSITION* InsertLayerBefore(XR__POSITION* position, CLayer* pLayer);
    /// The same behind a position of m_LayerList; null means at the tail.
    XR__POSITION* InsertLayerAfter(XR__POSITION* position, CLayer* pLayer);
    /// The layer of this number; null where there is none. On disk the buffer layer, or null where there is
    /// no buffer layer or the file has no layer there.
    CLayer* GetLayerAt(int nLayer);
    /// The layer at a position, in the same way; null for a null position.
    CLayer* GetLayerAt(XR__POSITION* position);
    /// Replaces the pointer at a position of m_LayerList. Nothing is released, and the box stays.
    void SetLayerAt(XR__POSITION* position, CLayer* pLayer);
    /// Head and tail of the list in use; null when it is empty.
    XR__POSITION* GetHeadLayerPos();
    XR__POSITION* GetTailLayerPos();
    /// The layer at the position, which then moves on, or back; null past the end. Null for a null position.
    CLayer* GetNextLayer(XR__POSITION*& position);
    CLayer* GetPrevLayer(XR__POSITION*& position);
    /// The count of the list in use.
    int GetLayerCount();
    /// Appends the hatches of a layer that have an id of 1000 or above to the list, which does not own them,
    /// and gives their number. Support stands in layers of even numbers: others give 0.
    int GetSupportAtLayer(int nLayer, XR_CList<void*, void*>* pList);
    /// Takes the layer at an end off m_LayerList and deletes it. Always null; an empty list stays so.
    CLayer* RemoveHeadLayer();
    CLayer* RemoveTailLayer();
    /// Takes a layer off m_LayerList without deleting it: it is the caller's, who must have got it before.
    void RemoveLayerAt(XR__POSITION* position);
    /// Deletes the layers of m_LayerList and empties it. The box stays.
    void ReleaseLayerList();
    /// The same, and empties m_OffsetList, and makes the box empty.
    void ReleaseAllLayer();
    /// ReleaseAllLayer.
    void RemoveAllLayer();

    // ---- slice files: src/cli/Header.cpp, LayerModelFile.cpp; modes are 1 text, 2 binary, 3 disguised

    /// m_nFileMode.
    unsigned int GetFileMode();
    /// Does nothing: 1. A file is opened by the host, and read with ReadCLIHead and ReadLayer.
    int ReadCLI(char* pszPath, int nMode);
    /// Reads the header of m_pFile from its start: mode, units, version, nozzle, and g_nCLILayers. 1 with the
    /// file at the start of the geometry, for a header without an end too, the file being at its own end
    /// then. 0 where there is no "$$HEADERSTART", where the header has an end but no mode was ever set, or
    /// where there is no file. A keyword counts within the first 20 characters of its line; the last mode
    /// named is the file's; a value that is missing is 0. Binary geometry begins 11 bytes behind the start of
    /// the line of "$$HEADEREND".
    int ReadCLIHead();
    /// Reads the layer that starts at an offset of m_pFile and adds it to pLayer, whose units become those of
    /// the model and whose loop list is rebuilt in any case. The result is that of CLayer::ReadCLIFile; 0 for
    /// another mode than 1, 2 or 3, and without a layer or a file.
    int ReadLayer(CLayer* pLayer, unsigned long nOffset);
    /// Writes a file of the header, which announces all layers, and those layers for which rand() gives a
    /// multiple of three: about one in three. The generator is seeded from the box, so that the same box
    /// thins the same way. A host that wants every layer calls SaveCLIHead, SaveLayer for each, and in mode 1
    /// writes "$$GEOMETRYEND\n" itself. On disk every layer is read on the way.
    ///
    /// The path is a zero-terminated string of 16-bit characters. 0 where the file cannot be created, for
    /// another mode (an empty file is left), or where a layer that is to be written cannot be had.
    int SaveCLIFile(char* pszPath, int nMode);
    /// Writes the header for nLayers layers; for 0 the count of the list in use is put in. 0 with nothing
    /// written for another mode. In mode 1 the file then stands where the first layer goes, in the others
    /// directly behind "$$HEADEREND".
    int SaveCLIHead(FILE* pFile, int nMode, int nLayers);
    /// Appends a layer: 1, also for another mode, which writes nothing. 0 for a null layer.
    int SaveLayer(CLayer* pLayer, FILE* pFile, int nMode);
    void SaveLayerASCII(CLayer* pLayer, FILE* pFile);
    void SaveLayerBINARY(CLayer* pLayer, FILE* pFile);
    void SaveLayerCOC(CLayer* pLayer, FILE* pFile);

    XR_CList<void*, void*> m_LayerList;  ///< CLayer*, owned; on disk its head is the buffer layer
    XR_CList<int, int> m_OffsetList;     ///< where the layers are in the file, for a model on disk
    FILE* m_pFile;                       ///< the open file; the host's
    double m_dUnits;                     ///< scale of all coordinates read; 1.0 in a new model
    std::uint32_t m_nFileMode;           ///< 1 in a new model
    char m_szFileName[260];              ///< for the host
    std::int32_t m_bInMemory;            ///< 1 in a new model
    std::int32_t m_nLayerLimit;          ///< for the host; 10000000 in a new model
    CBoundBox3D m_BoundBox;              ///< of all layers added; removing does not make it smaller
    std::int32_t m_nVersion;             ///< of the file; 100 in a new model
    std::int32_t m_nNozzle;              ///< of the file; 0 in a new model
    std::int64_t m_nUser1;               ///< for the host, like those that follow
    std::int64_t m_nUser2;
    std::int64_t m_nUser3;

private:
    int ReadLayerASCII(CLayer* pLayer, unsigned long nOffset);
    int ReadLayerBINARY(CLayer* pLayer, unsigned long nOffset);
    int ReadLayerCOC(CLayer* pLayer, unsigned long nOffset);
};

/// The number of layers that the header read last announces; process-wide.
extern VARNET_API std::int32_t g_nCLILayers;
