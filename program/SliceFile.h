#pragma once

#include <Varnet64.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

// Slice files, layer by layer: never more than one layer in memory, unless the whole file is asked for.

enum class SliceMode { kText = 1, kBinary = 2, kDisguised = 3 };

/// "CLI slices, text"
char const* NameOf(SliceMode mode);
/// The mode of "ascii", "binary" or "coc"; nothing for another word.
std::optional<SliceMode> SliceModeOf(std::string const& word);

/// Whether the file begins as a slice file does. False too where it cannot be read.
bool IsSliceFile(std::string const& file);

/// Reads the layers of a file one after the other.
class SliceReader {
public:
    /// Reads the header. Throws Failure when the file cannot be read or is no slice file.
    explicit SliceReader(std::string const& file);

    /// Releases what the layer holds and reads the next one into it, with a current loop list. False when
    /// there are no more.
    bool Next(CLayer& layer);

    SliceMode Mode() const { return static_cast<SliceMode>(m_Model.m_nFileMode); }
    /// Units, version and nozzle are in it; its layers are not.
    CLayerModel const& Header() const { return m_Model; }
    int Announced() const { return m_nAnnounced; }
    int LayersRead() const { return m_nLayersRead; }
    /// Where the layer that was read last begins; after the last one, where the file could not be read on.
    std::int64_t LayerStart() const { return m_nLayerStart; }
    /// The share of the file that has been read, from 0 to 1.
    double Share() const;
    /// Throws Failure unless the layers end where the file does.
    void RequireEnd();
    FILE* Handle() const { return m_pFile.get(); }

private:
    struct Closer {
        void operator()(FILE* pFile) const { std::fclose(pFile); }
    };

    std::string m_Name;
    std::unique_ptr<FILE, Closer> m_pFile;
    CLayerModel m_Model;
    std::int64_t m_nSize = 0;
    std::int64_t m_nLayerStart = 0;
    int m_nAnnounced = 0;
    int m_nLayersRead = 0;
};

/// Writes a slice file of the layers of another one, each as edit(layer) leaves it, in the given mode, and
/// gives their number. The file appears under its name only when it is complete. Throws Failure when the
/// input cannot be read to its end, when the output cannot be written, or on Ctrl-C.
int RewriteSlices(std::string const& input, std::string const& output, SliceMode mode,
                  std::function<void(CLayer&)> const& edit);

/// A whole slice file as a model: in memory, or, where it is larger than nLimit bytes, on disk.
class SliceModel {
public:
    /// Reads the file to its end, with a progress bar. Throws Failure as SliceReader does. A file that is
    /// broken is read as far as it goes.
    SliceModel(std::string const& file, std::uintmax_t nLimit);

    CLayerModel& Model() { return m_Model; }
    SliceReader& Reader() { return m_Reader; }
    bool IsOnDisk() const { return m_Model.m_bInMemory == 0; }

private:
    SliceReader m_Reader;
    CLayerModel m_Model;
};
