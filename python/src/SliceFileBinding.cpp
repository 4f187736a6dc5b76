// SliceFile, SliceWriter, and what works on whole slice files.

#include "Arrays.h"
#include "Holders.h"
#include "Waiting.h"

namespace varnet::python {

namespace {

// A file that is read: shared with calls that are under way.
std::shared_ptr<Layer> LayerOf(std::shared_ptr<SliceFile const> const& file, std::int64_t number) {
    py::gil_scoped_release const release;
    return std::make_shared<Layer>(file->LayerAt(number));
}

FileHolder Open(std::filesystem::path const& path, bool partial, py::object const& progress) {
    return DoLong(progress, "Opening", [&](Progress callback) {
        SliceReadSettings settings;
        settings.partial = partial;
        settings.progress = std::move(callback);
        return FileHolder{std::make_shared<SliceFile const>(path, settings)};
    });
}

std::shared_ptr<Layer> Item(FileHolder const& holder, std::int64_t index) {
    std::int64_t const count = holder.file->LayerCount();
    std::int64_t const number = index < 0 ? index + count : index;
    if (number < 0 || number >= count)
        throw py::index_error("there are " + std::to_string(count) + " layers");
    return LayerOf(holder.file, number + 1);
}

py::list Items(FileHolder const& holder, py::slice const& range) {
    py::ssize_t start = 0;
    py::ssize_t stop = 0;
    py::ssize_t step = 0;
    py::ssize_t length = 0;
    if (!range.compute(static_cast<py::ssize_t>(holder.file->LayerCount()), &start, &stop, &step, &length))
        throw py::error_already_set();
    py::list list;
    for (py::ssize_t i = 0; i < length; ++i) list.append(LayerOf(holder.file, start + i * step + 1));
    return list;
}

// Layer by layer, for iter().
struct FileWalk {
    std::shared_ptr<SliceFile const> file;
    std::int64_t next = 1;

    std::shared_ptr<Layer> Next() {
        if (next > file->LayerCount()) throw py::stop_iteration();
        std::int64_t const number = next++;
        return LayerOf(file, number);
    }
    std::int64_t Left() const { return file->LayerCount() - next + 1; }
};

char const* WordOf(SliceMode mode) {
    for (auto const& [word, value] : kSliceModes) {
        if (value == mode) return word;
    }
    return "binary";
}

py::str Html(FileHolder const& holder) {
    SliceFile const& file = *holder.file;
    auto const row = [](char const* name, std::string const& value) {
        return std::string("<tr><th>") + name + "</th><td>" + varnet::EscapedMarkup(value) + "</td></tr>";
    };
    std::string html = "<table>" + row("slice file", std::string(py::str(py::cast(file.Path().filename())))) +
                       row("format", NameOf(file.Header().mode)) +
                       row("layers", std::to_string(file.LayerCount())) +
                       row("bytes", std::to_string(file.Size())) + "</table>";
    if (file.LayerCount() > 0) {
        std::int64_t const middle = (file.LayerCount() + 1) / 2;
        html += PictureOf(*LayerOf(holder.file, middle), "layer " + std::to_string(middle));
    }
    return TextOf(html);
}

// The first and the last layer of a file, and how many the build has.
using LayerTriple = std::tuple<std::int64_t, std::int64_t, std::int64_t>;

// Between its first layer and finish() one call at a time may use it.
class Writer {
public:
    Writer(std::filesystem::path const& path, std::int64_t layers, std::string const& mode,
           std::optional<std::uint64_t> seed, std::optional<LayerTriple> const& range) {
        if (layers < 0) ThrowArgument("layers must not be below 0");
        SliceWriteSettings settings;
        settings.mode = Meaning(kSliceModes, mode, "mode");
        settings.seed = seed;
        if (range.has_value())
            settings.range = LayerRange{std::get<0>(*range), std::get<1>(*range), std::get<2>(*range)};
        m_Writer.emplace(path, layers, settings);
    }

    void Write(Layer const& layer) {
        Busy const busy(m_Busy);
        SliceWriter& writer = Open();
        {
            py::gil_scoped_release const release;
            writer.Write(layer);
        }
        Count();
    }

    void Finish() {
        Busy const busy(m_Busy);
        SliceWriter& writer = Open();
        try {
            py::gil_scoped_release const release;
            writer.Finish();
        } catch (...) {
            m_Writer.reset();
            throw;
        }
        Count();
        m_Writer.reset();
    }

    void Exit(bool failed) {
        if (failed) {
            Busy const busy(m_Busy);
            m_Writer.reset();
        } else if (m_Writer.has_value()) {
            Finish();
        }
    }

    std::int64_t LayersWritten() const { return m_Layers; }
    std::uint64_t BytesWritten() const { return m_Bytes; }

private:
    SliceWriter& Open() {
        if (!m_Writer.has_value()) ThrowArgument("this slice file was finished or given up");
        return *m_Writer;
    }
    void Count() {
        m_Layers = m_Writer->LayersWritten();
        m_Bytes = m_Writer->BytesWritten();
    }

    std::optional<SliceWriter> m_Writer;
    std::int64_t m_Layers = 0;
    std::uint64_t m_Bytes = 0;
    bool m_Busy = false;
};

std::int64_t WriteSlices(std::filesystem::path const& path, py::object layers, std::string const& mode,
                         std::optional<std::uint64_t> seed, std::optional<LayerTriple> const& range) {
    py::ssize_t length = PyObject_LengthHint(layers.ptr(), -1);
    if (length < 0) {
        PyErr_Clear();
        layers = py::list(layers);
        length = static_cast<py::ssize_t>(py::len(layers));
    }
    Writer writer(path, length, mode, seed, range);
    for (py::handle const layer : py::iter(layers)) {
        auto const kept = layer.cast<std::shared_ptr<Layer>>();
        writer.Write(*kept);
        if (PyErr_CheckSignals() != 0) throw py::error_already_set();
    }
    writer.Finish();
    return writer.LayersWritten();
}

std::int64_t Join(py::object const& inputs, std::filesystem::path const& output, py::object const& progress) {
    std::vector<std::filesystem::path> paths;
    for (py::handle const input : inputs) paths.push_back(input.cast<std::filesystem::path>());
    return DoLong(progress, "Joining",
                  [&](Progress const& callback) { return JoinSliceFiles(paths, output, callback).layers; });
}

void AddFileClass(py::module_& module) {
    using py::arg;
    RecordClass<SliceFileReport>(module, "SliceFileReport")
        .Add("blank_lines", &SliceFileReport::blankLines)
        .Add("comments", &SliceFileReport::comments)
        .Add("unknown_commands", &SliceFileReport::unknownCommands)
        .Add("wrong_counts", &SliceFileReport::wrongCounts)
        .Add("stray_bytes", &SliceFileReport::strayBytes)
        .Add("end_missing", &SliceFileReport::endMissing)
        .Add("broken", &SliceFileReport::broken)
        .Add("notes", &SliceFileReport::notes);
    NewClass<FileWalk>(module, "_FileWalk")
        .def("__iter__", [](py::object const& self) { return self; })
        .def("__next__", &FileWalk::Next)
        .def("__length_hint__", &FileWalk::Left);

    auto file = NewClass<FileHolder>(module, "SliceFile");
    auto const add = [&file](char const* name, auto getter) {
        file.def_property_readonly(name, getter, Doc(std::string("SliceFile.") + name));
    };
    file.def(py::init(&Open), Doc("SliceFile.__init__"), arg("path"), py::kw_only(), arg("partial") = false,
             arg("progress") = py::none());
    add("path", [](FileHolder const& h) { return py::str(py::cast(h.file->Path())); });
    add("size", [](FileHolder const& h) { return h.file->Size(); });
    add("mode", [](FileHolder const& h) { return WordOf(h.file->Header().mode); });
    add("units", [](FileHolder const& h) { return h.file->Header().units; });
    add("announced_layers", [](FileHolder const& h) { return h.file->Header().announcedLayers; });
    add("dimension", [](FileHolder const& h) {
        std::optional<Box3> const& box = h.file->Header().dimension;
        return box.has_value() ? py::object(ArrayOf(*box)) : py::object(py::none());
    });
    add("report", [](FileHolder const& h) { return h.file->Report(); });
    file.def("__len__", [](FileHolder const& h) { return h.file->LayerCount(); });
    file.def("__iter__", [](FileHolder const& h) { return FileWalk{h.file}; });
    file.def("__getitem__", &Item, arg("index"));
    file.def("__getitem__", &Items, arg("index"));
    file.def("_repr_html_", &Html);
    file.def("__repr__", [](FileHolder const& h) {
        return "<varnet.SliceFile: " + std::to_string(h.file->LayerCount()) + " layers, " +
               WordOf(h.file->Header().mode) + ">";
    });
}

}  // namespace

void AddSliceFile(py::module_& module) {
    using py::arg;
    AddFileClass(module);
    NewClass<Writer>(module, "SliceWriter")
        .def(py::init<std::filesystem::path const&, std::int64_t, std::string const&,
                      std::optional<std::uint64_t>, std::optional<LayerTriple> const&>(),
             Doc("SliceWriter.__init__"), arg("path"), arg("layers"), py::kw_only(), arg("mode") = "binary",
             arg("seed") = py::none(), arg("range") = py::none())
        .def(
            "write", [](Writer& writer, std::shared_ptr<Layer> const& layer) { writer.Write(*layer); },
            Doc("SliceWriter.write"), arg("layer"))
        .def("finish", &Writer::Finish, Doc("SliceWriter.finish"))
        .def_property_readonly("layers_written", &Writer::LayersWritten, Doc("SliceWriter.layers_written"))
        .def_property_readonly("bytes_written", &Writer::BytesWritten, Doc("SliceWriter.bytes_written"))
        .def("__enter__", [](py::object const& self) { return self; })
        .def(
            "__exit__",
            [](Writer& writer, py::object const& kind, py::object const&, py::object const&) {
                writer.Exit(!kind.is_none());
            },
            arg("kind"), arg("value"), arg("traceback"));
    module.def("write_slices", &WriteSlices, Doc("write_slices"), arg("path"), arg("layers"), py::kw_only(),
               arg("mode") = "binary", arg("seed") = py::none(), arg("range") = py::none());
    module.def("join_slices", &Join, Doc("join_slices"), arg("inputs"), arg("output"), py::kw_only(),
               arg("progress") = py::none());
}

}  // namespace varnet::python
