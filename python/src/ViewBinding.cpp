// Parts and layers on a page to look at.

#include "Holders.h"
#include "Waiting.h"

namespace varnet::python {

namespace {

// A page under way. Work that is left behind when it is stopped keeps it alive.
class PageMaker {
public:
    PageMaker(std::string title, bool pictures) {
        PageSettings settings;
        settings.title = std::move(title);
        settings.pictures = pictures;
        settings.progress = [told = m_Told](double share) { return !*told || (*told)(share); };
        m_Page = std::make_shared<Page>(std::move(settings));
    }

    /// Does something long with the page: step(page) must own what it uses. After an error nobody may use the
    /// page any more.
    template <class Step>
    void Do(py::object const& progress, Step step) {
        DoAside(progress, "Making the page",
                [page = m_Page, told = m_Told, step = std::move(step)](Progress const& callback) {
                    *told = callback;
                    step(*page);
                    *told = nullptr;
                    return true;
                });
    }

    std::shared_ptr<Page> const& Shared() const { return m_Page; }

private:
    std::shared_ptr<Progress> m_Told = std::make_shared<Progress>();
    std::shared_ptr<Page> m_Page;
};

struct ViewHolder {
    std::shared_ptr<Page const> page;
    int height = 0;
};

// The items of view(), one after the other. A part waits until it is known what comes with it.
class Items {
public:
    Items(PageMaker& maker, py::object const& progress) : m_Maker(maker), m_Progress(progress) {}

    void Add(py::handle const& item) {
        if (py::isinstance<PartHolder>(item)) {
            AddWaitingPart();
            m_Part = item.cast<PartHolder const&>().part;
        } else if (py::isinstance<SupportsHolder>(item)) {
            AddSupports(item.cast<SupportsHolder const&>());
        } else if (py::isinstance<SurfacesHolder>(item)) {
            if (!m_Part.has_value() || m_Surfaces != nullptr)
                ThrowArgument("surfaces stand behind the part that they are of");
            m_Surfaces = item.cast<SurfacesHolder const&>().surfaces;
        } else {
            AddWaitingPart();
            AddSlices(item);
        }
    }

    void Finish() { AddWaitingPart(); }

private:
    void AddSupports(SupportsHolder const& holder) {
        bool const together = m_Part.has_value() && m_Supports == nullptr &&
                              m_Part->Points().data() == holder.part.Points().data();
        if (!together) {
            AddWaitingPart();
            m_Part = holder.part;
        }
        m_Supports = holder.supports;
    }

    void AddWaitingPart() {
        if (!m_Part.has_value()) return;
        m_Maker.Do(m_Progress, [part = *std::exchange(m_Part, std::nullopt),
                                supports = std::exchange(m_Supports, nullptr),
                                surfaces = std::exchange(m_Surfaces, nullptr)](Page& page) {
            page.AddPart(part, {part.Name(), supports.get(), surfaces.get()});
        });
        m_InLayers = false;
    }

    void AddSlices(py::handle const& item) {
        if (py::isinstance<FileHolder>(item)) {
            m_Maker.Do(m_Progress,
                       [file = item.cast<FileHolder const&>().file](Page& page) { page.AddSlices(*file); });
            m_InLayers = false;
        } else if (py::isinstance<Layer>(item)) {
            if (!m_InLayers) m_Maker.Shared()->BeginSlices("layers");
            m_InLayers = true;
            AddLayer(item);
        } else if (py::isinstance<py::iterable>(item) && !py::isinstance<py::str>(item)) {
            m_Maker.Shared()->BeginSlices("layers");
            for (py::handle const layer : py::iter(item)) AddLayer(layer);
            m_InLayers = false;
        } else {
            Refuse(item);
        }
    }

    void AddLayer(py::handle const& item) {
        if (!py::isinstance<Layer>(item)) Refuse(item);
        auto const layer = item.cast<std::shared_ptr<Layer>>();
        {
            py::gil_scoped_release const release;
            m_Maker.Shared()->AddLayer(*layer);
        }
        if (PyErr_CheckSignals() != 0) throw py::error_already_set();
    }

    [[noreturn]] static void Refuse(py::handle const& item) {
        throw py::type_error("view() takes parts, supports, surfaces, slice files and layers, not " +
                             std::string(py::str(py::type::of(item).attr("__name__"))));
    }

    PageMaker& m_Maker;
    py::object m_Progress;
    std::optional<Part> m_Part;
    std::shared_ptr<Supports const> m_Supports;
    std::shared_ptr<Surfaces const> m_Surfaces;
    bool m_InLayers = false;  // layers that come one by one go into the list begun last
};

ViewHolder MakeView(py::args const& items, std::optional<std::string> const& title, bool pictures, int height,
                    py::object const& progress) {
    if (height < 1 || height > 100'000) ThrowArgument("height is from 1 to 100000");
    PageMaker maker(title.value_or(""), pictures);
    Items all(maker, progress);
    for (py::handle const item : items) all.Add(item);
    all.Finish();
    if (maker.Shared()->PartCount() == 0 && maker.Shared()->LayerCount() == 0)
        throw Error(ErrorKind::kContent, "there is nothing to show");
    return {maker.Shared(), height};
}

std::string HtmlOf(ViewHolder const& view) {
    return DoAside(py::none(), "Making the page",
                   [page = view.page](Progress const&) { return page->Html(); });
}

// As the value of an attribute: not a character may change, since the page states hashes of its scripts.
std::string Quoted(std::string const& html) {
    std::string quoted;
    quoted.reserve(html.size() + html.size() / 8);
    for (char const c : html) {
        if (c == '&') {
            quoted += "&amp;";
        } else if (c == '"') {
            quoted += "&quot;";
        } else {
            quoted += c;
        }
    }
    return quoted;
}

// The frame keeps the page's own rules: its script runs, and can reach nothing of the notebook.
py::str Frame(ViewHolder const& view) {
    return TextOf("<iframe sandbox=\"allow-scripts\" style=\"width:100%;border:0;height:" +
                  std::to_string(view.height) + "px\" title=\"Parts and layers\" srcdoc=\"" +
                  Quoted(HtmlOf(view)) + "\"></iframe>");
}

}  // namespace

void AddView(py::module_& module) {
    using py::arg;
    auto view = NewClass<ViewHolder>(module, "View");
    view.def_property_readonly(
        "parts", [](ViewHolder const& h) { return h.page->PartCount(); }, Doc("View.parts"));
    view.def_property_readonly(
        "layers", [](ViewHolder const& h) { return h.page->LayerCount(); }, Doc("View.layers"));
    view.def_property_readonly(
        "html", [](ViewHolder const& h) { return TextOf(HtmlOf(h)); }, Doc("View.html"));
    view.def(
        "write",
        [](ViewHolder const& h, std::filesystem::path const& path) {
            DoAside(py::none(), "Writing", [page = h.page, path](Progress const&) {
                page->Write(path);
                return true;
            });
        },
        Doc("View.write"), arg("path"));
    view.def("_repr_html_", &Frame);
    view.def("__repr__", [](ViewHolder const& h) {
        return "<varnet.View: " + std::to_string(h.page->PartCount()) + " parts, " +
               std::to_string(h.page->LayerCount()) + " layers>";
    });
    module.def("view", &MakeView, Doc("view"), py::kw_only(), arg("title") = py::none(),
               arg("pictures") = true, arg("height") = 600, arg("progress") = py::none());
}

}  // namespace varnet::python
