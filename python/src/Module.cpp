// The module varnet._varnet: its errors and texts; the classes are in the other files.

#include <map>
#include <stdexcept>

#include "Binding.h"
#include "Waiting.h"

namespace varnet::python {

namespace {

// The classes of errors live as long as the process, as the interpreter's own do.
PyObject* g_Error = nullptr;
PyObject* g_FileError = nullptr;
PyObject* g_ArgumentError = nullptr;
PyObject* g_Cancelled = nullptr;

PyObject* ClassOf(ErrorKind kind) {
    switch (kind) {
        case ErrorKind::kArgument:
            return g_ArgumentError;
        case ErrorKind::kFile:
            return g_FileError;
        case ErrorKind::kCancelled:
            return g_Cancelled;
        case ErrorKind::kContent:
            break;
    }
    return g_Error;
}

template <class Number>
py::object NumberOrNone(std::optional<Number> const& number) {
    return number.has_value() ? py::object(py::int_(*number)) : py::object(py::none());
}

void Raise(Error const& error) {
    PyObject* const kind = ClassOf(error.Kind());
    py::object const raised = py::reinterpret_borrow<py::object>(kind)(TextOf(error.what()));
    if (!error.File().empty()) raised.attr("file") = py::str(py::cast(error.File()));
    raised.attr("line") = NumberOrNone(error.Line());
    raised.attr("byte") = NumberOrNone(error.Byte());
    PyErr_SetObject(kind, raised.ptr());
}

PyObject* NewError(py::module_& module, char const* name, py::tuple const& bases, py::dict const& fields) {
    PyObject* const made = PyErr_NewExceptionWithDoc((std::string("varnet.") + name).c_str(), Doc(name),
                                                     bases.ptr(), fields.ptr());
    if (made == nullptr) throw py::error_already_set();
    module.attr(name) = py::reinterpret_borrow<py::object>(made);
    return made;
}

}  // namespace

void AddErrors(py::module_& module) {
    auto const borrowed = [](PyObject* object) { return py::reinterpret_borrow<py::object>(object); };
    py::dict fields;
    for (char const* const field : {"file", "line", "byte"}) fields[field] = py::none();
    g_Error = NewError(module, "Error", py::make_tuple(borrowed(PyExc_Exception)), fields);
    py::object const base = borrowed(g_Error);
    g_FileError = NewError(module, "FileError", py::make_tuple(base, borrowed(PyExc_OSError)), py::dict());
    g_ArgumentError =
        NewError(module, "ArgumentError", py::make_tuple(base, borrowed(PyExc_ValueError)), py::dict());
    g_Cancelled = NewError(module, "Cancelled", py::make_tuple(base), py::dict());
    py::register_exception_translator([](std::exception_ptr pointer) {
        try {
            if (pointer) std::rethrow_exception(pointer);
        } catch (Error const& error) {
            Raise(error);
        }
    });
}

char const* Doc(std::string const& name) {
    static std::map<std::string, char const*> const docstrings = {
        {"_FileWalk", "Goes through the layers of a slice file."},
#include "Docstrings.inc"
    };
    auto const found = docstrings.find(name);
    if (found == docstrings.end()) throw std::logic_error("no docstring for " + name);
    return found->second;
}

py::str TextOf(std::string const& bytes) {
    PyObject* const text =
        PyUnicode_DecodeUTF8(bytes.data(), static_cast<py::ssize_t>(bytes.size()), "replace");
    if (text == nullptr) throw py::error_already_set();
    return py::reinterpret_steal<py::str>(text);
}

py::list TextsOf(std::vector<std::string> const& lines) {
    py::list list;
    for (std::string const& line : lines) list.append(TextOf(line));
    return list;
}

std::string Title(py::object const& given, std::string const& otherwise) {
    return given.is_none() ? otherwise : given.cast<std::string>();
}

void* RefuseUnmade(std::size_t) { throw py::type_error("this object was never made: call its class"); }

void ThrowArgument(std::string const& message) { throw Error(ErrorKind::kArgument, message); }

}  // namespace varnet::python

PYBIND11_MODULE(_varnet, module) {
    using namespace varnet::python;
    py::options options;
    options.disable_function_signatures();
    module.attr("__version__") = VARNET_VERSION;
    AddErrors(module);
    AddLayer(module);
    AddPart(module);
    AddSupports(module);
    AddSlices(module);
    AddSliceFile(module);
    AddView(module);
    for (auto const& [name, value] : module.attr("__dict__").cast<py::dict>()) {
        if (PyType_Check(value.ptr()) != 0) value.attr("__module__") = "varnet";
    }
    // At the end threads that were left behind are waited for, before what they use is taken down.
    py::module_::import("atexit").attr("register")(py::cpp_function([] {
        py::gil_scoped_release const release;
        WaitForThreads();
    }));
}
