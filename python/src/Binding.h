#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "varnet/Kit.h"

// What all of the module's files use.
//
// Objects of the module are touched only by the thread that holds Python's lock. Work that may be long takes
// what it needs out of them (copies that share), lets go of the lock, and puts its result back when it holds
// the lock again: so that no use by several threads, however wrong, is more than a surprise.

namespace varnet::python {

namespace py = pybind11;

void AddErrors(py::module_& module);
void AddPart(py::module_& module);
void AddSupports(py::module_& module);
void AddLayer(py::module_& module);
void AddSlices(py::module_& module);
void AddSliceFile(py::module_& module);
void AddView(py::module_& module);

/// The docstring of a name such as "Part.repair", from the stub file. Throws std::logic_error where there is
/// none.
char const* Doc(std::string const& name);

/// Text of a file or a message: bytes that are no UTF-8 are replaced.
py::str TextOf(std::string const& bytes);
py::list TextsOf(std::vector<std::string> const& lines);

/// The title that was given, or another where none was.
std::string Title(py::object const& given, std::string const& otherwise);

/// Throws an Error of kind kArgument.
[[noreturn]] void ThrowArgument(std::string const& message);

/// What a word means; throws an Error of kind kArgument that lists the words where it is none of them.
template <class Value, std::size_t N>
Value Meaning(std::pair<char const*, Value> const (&words)[N], std::string const& word, char const* what) {
    std::string list;
    for (auto const& [name, value] : words) {
        if (word == name) return value;
        list += (list.empty() ? "\"" : ", \"") + std::string(name) + "\"";
    }
    ThrowArgument(std::string(what) + " is one of " + list);
}

inline constexpr std::pair<char const*, MeshFormat> kMeshFormats[] = {{"binary", MeshFormat::kBinaryStl},
                                                                      {"csm", MeshFormat::kPlainCsm},
                                                                      {"csm-strips", MeshFormat::kStripCsm},
                                                                      {"csm-rings", MeshFormat::kRingCsm}};
inline constexpr std::pair<char const*, SliceMode> kSliceModes[] = {
    {"text", SliceMode::kText}, {"binary", SliceMode::kBinary}, {"disguised", SliceMode::kDisguised}};

/// Throws a TypeError: for objects of a class that __new__ has made and __init__ has not.
void* RefuseUnmade(std::size_t size);

/// A class of the module, with its docstring. It is final, and its own class is `type`, as those of Python
/// are.
template <class Held, class... Holder>
py::class_<Held, Holder...> NewClass(py::module_& module, char const* name) {
    auto const type = py::reinterpret_borrow<py::object>(reinterpret_cast<PyObject*>(&PyType_Type));
    py::class_<Held, Holder...> made(module, name, Doc(name), py::metaclass(type), py::is_final());
    // pybind11 gives such an object memory when it is first used, and would let it be used as it comes.
    py::detail::get_type_info(reinterpret_cast<PyTypeObject*>(made.ptr()))->operator_new = &RefuseUnmade;
    return made;
}

/// A class of plain fields, each with its docstring, and a repr that lists them.
template <class Record>
class RecordClass {
public:
    RecordClass(py::module_& module, char const* name)
        : m_Name(name), m_Class(NewClass<Record>(module, name)) {
        m_Class.def("__repr__", [name, fields = m_Fields](py::object const& self) {
            std::string text = std::string("varnet.") + name + "(";
            char const* comma = "";
            for (std::string const& field : *fields) {
                text += comma + field + "=" + std::string(py::repr(self.attr(field.c_str())));
                comma = ", ";
            }
            return TextOf(text + ")");
        });
    }

    template <class Field>
    RecordClass& Add(char const* name, Field Record::*field) {
        return AddGetter(name, [field](Record const& record) { return ValueOf(record.*field); });
    }

private:
    template <class Field>
    static Field ValueOf(Field const& field) {
        return field;
    }
    static py::list ValueOf(std::vector<std::string> const& lines) { return TextsOf(lines); }
    static py::object ValueOf(std::optional<std::string> const& text) {
        return text.has_value() ? py::object(TextOf(*text)) : py::object(py::none());
    }

    template <class Getter>
    RecordClass& AddGetter(char const* name, Getter getter) {
        m_Fields->push_back(name);
        m_Class.def_property_readonly(name, getter, Doc(m_Name + "." + name));
        return *this;
    }

    std::string m_Name;
    std::shared_ptr<std::vector<std::string>> m_Fields = std::make_shared<std::vector<std::string>>();
    py::class_<Record> m_Class;
};

/// An object that one call at a time may use, because it has a place to go on from.
class Busy {
public:
    /// Throws a RuntimeError where another thread is at it. With Python's lock.
    explicit Busy(bool& flag) : m_Flag(flag) {
        if (flag) throw std::runtime_error("another thread is using it");
        flag = true;
    }
    Busy(Busy const&) = delete;
    Busy& operator=(Busy const&) = delete;
    ~Busy() { m_Flag = false; }

private:
    bool& m_Flag;
};

}  // namespace varnet::python
