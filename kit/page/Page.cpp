#include "varnet/Page.h"
#include "varnet/Picture.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdio>
#include <functional>
#include <utility>

#include "files/File.h"
#include "page/PageLayers.h"
#include "page/PagePart.h"
#include "page/PageText.h"
#include "page/Viewer.h"
#include "part/Pace.h"

namespace varnet {

namespace {

// As shown to browsers without WebGL.
struct Picture {
    std::string svg;
    std::string title;
};

struct Slices {
    std::string name;
    std::string about;
    LayerPacker packer;
    Layer pictured;

    void Add(Layer const& layer) {
        packer.Add(layer);
        // The one for the picture is chosen while nobody knows how many there will be: the last one whose
        // place is a power of two or half way to the next.
        std::size_t const count = packer.Layers().size();
        std::size_t const power = std::bit_floor(count);
        if (count == power || count == power + power / 2) pictured = layer;
    }
};

std::string FromHex(std::string_view hex) {
    auto const digit = [](char c) { return c <= '9' ? c - '0' : c - 'a' + 10; };
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes.push_back(static_cast<char>(digit(hex[i]) * 16 + digit(hex[i + 1])));
    return bytes;
}

std::string Rounded(double value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.6g", value);
    return text.data();
}

// The page forbids itself everything but its own script and style and pictures that it holds.
std::string Policy() {
    return "default-src 'none'; script-src 'sha256-" + Base64(FromHex(kViewerScriptHash)) +
           "'; style-src 'sha256-" + Base64(FromHex(kViewerStyleHash)) +
           "'; img-src data:; base-uri 'none'; form-action 'none'";
}

}  // namespace

class Page::Work {
public:
    explicit Work(PageSettings given) : settings(std::move(given)) {}

    void Emit(std::function<void(std::string_view)> const& write);

    PageSettings settings;
    std::vector<std::string> parts;       // JSON objects
    std::vector<std::string> partChunks;  // base64
    std::string firstName;
    std::vector<Picture> pictures;
    std::vector<Slices> slices;

private:
    std::string Describe() const;
    static void AddSlicesJson(Json& json, Slices const& list, std::size_t firstChunk);
    std::string Pictures() const;
};

void Page::Work::AddSlicesJson(Json& json, Slices const& list, std::size_t firstChunk) {
    json.Open('{').Name("name").Text(list.name).Name("about").Text(list.about).Name("layers").Open('[');
    for (PageLayer const& layer : list.packer.Layers()) {
        json.Open('[').Whole(layer.number).Number(layer.z);
        bool const empty = layer.box.IsEmpty();
        for (double const value : {layer.box.min.x, layer.box.min.y, layer.box.max.x, layer.box.max.y})
            json.Exact(empty ? 0.0 : value);
        json.Whole(static_cast<std::int64_t>(firstChunk + layer.chunk));
        for (std::size_t const count :
             {layer.contours, layer.openPaths, layer.strokes, layer.supportStrokes, layer.points})
            json.Whole(static_cast<std::int64_t>(count));
        for (double const value : {layer.contourLength, layer.strokeLength, layer.area, layer.travel})
            json.Number(value);
        json.Close(']');
    }
    json.Close(']').Close('}');
}

// What the page holds, and which chunks it is in.
std::string Page::Work::Describe() const {
    Json slicesJson;
    slicesJson.Open('[');
    std::size_t chunk = partChunks.size();
    for (Slices const& list : slices) {
        AddSlicesJson(slicesJson, list, chunk);
        chunk += list.packer.Chunks().size();
    }
    slicesJson.Close(']');
    Json title;
    title.Text(settings.title.empty() ? firstName : settings.title);
    std::string json = "{\"version\":1,\"title\":" + title.Document() + ",\"parts\":[";
    for (std::size_t i = 0; i < parts.size(); ++i) json.append(i == 0 ? "" : ",").append(parts[i]);
    return json + "],\"slices\":" + slicesJson.Document() + "}";
}

std::string Page::Work::Pictures() const {
    std::string html;
    auto const add = [&html](Picture const& picture) {
        if (picture.svg.empty()) return;
        std::string const title = EscapedMarkup(ValidUtf8(picture.title));
        html += "<figure><img loading=\"lazy\" alt=\"" + title + "\" src=\"data:image/svg+xml;base64," +
                Base64(picture.svg) + "\"><figcaption>" + title + "</figcaption></figure>\n";
    };
    for (Picture const& picture : pictures) add(picture);
    if (!settings.pictures) return html;
    for (Slices const& list : slices) {
        std::string const title = list.name + ", layer " + std::to_string(list.pictured.number) +
                                  ", z = " + Rounded(list.pictured.z) + " mm";
        add({LayerPicture(list.pictured, title), title});
    }
    return html;
}

void Page::Work::Emit(std::function<void(std::string_view)> const& write) {
    if (parts.empty() && std::all_of(slices.begin(), slices.end(),
                                     [](Slices const& list) { return list.packer.Layers().empty(); })) {
        throw Error(ErrorKind::kContent, "there is nothing to show on the page: no part and no layer");
    }
    std::size_t chunks = partChunks.size();
    for (Slices& list : slices) {
        list.packer.Finish();
        chunks += list.packer.Chunks().size();
    }
    write(
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta http-equiv=\"Content-Security-Policy\" content=\"");
    write(Policy());
    write(
        "\">\n<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
        "<link rel=\"icon\" href=\"data:,\">\n<title>");
    write(EscapedMarkup(ValidUtf8(settings.title.empty() ? firstName : settings.title)));
    write("</title>\n<style>");
    write(kViewerStyle);
    write("</style>\n</head>\n<body>\n");
    write(kViewerBody);
    write("<section id=\"pictures\" aria-label=\"Pictures\">\n");
    write(Pictures());
    write("</section>\n<script>");
    write(kViewerScript);
    write("</script>\n");
    Watch watch(settings.progress);
    std::size_t done = 0;
    auto const chunk = [&](std::string const& id, std::string_view base64) {
        write("<script type=\"application/octet-stream\" id=\"" + id + "\">");
        write(base64);
        write("</script>\n");
        watch.Tell(static_cast<double>(done++) / static_cast<double>(chunks + 1));
    };
    chunk("about", Base64(Deflated(Describe())));
    std::size_t number = 0;
    auto const nextId = [&number] {
        std::string id(1, 'd');
        return id += std::to_string(number++);
    };
    for (std::string const& bytes : partChunks) chunk(nextId(), bytes);
    for (Slices const& list : slices) {
        for (std::string const& bytes : list.packer.Chunks()) chunk(nextId(), Base64(bytes));
    }
    write("<script type=\"application/octet-stream\" id=\"end\"></script>\n</body>\n</html>\n");
}

Page::Page(PageSettings settings) : m_Work(std::make_unique<Work>(std::move(settings))) {}
Page::~Page() = default;
Page::Page(Page&& other) noexcept = default;
Page& Page::operator=(Page&& other) noexcept = default;

void Page::AddPart(Part const& part, PagePart const& about) {
    std::string const name = about.name.empty() ? part.Name() : about.name;
    if (part.Triangles().empty()) throw Error(ErrorKind::kContent, name + ": the part has no facets to show");
    if (about.surfaces != nullptr && about.surfaces->ofTriangle.size() != part.Triangles().size())
        throw Error(ErrorKind::kArgument, name + ": the surfaces are those of another part");
    PackedPart packed = PackPart(part, about, m_Work->partChunks.size(), m_Work->settings.progress);
    Picture picture;
    if (m_Work->settings.pictures) picture = {PartPicture(part, about), name};
    for (std::string& chunk : packed.chunks) {
        std::string const bytes = std::move(chunk);
        m_Work->partChunks.push_back(Base64(bytes));
    }
    m_Work->parts.push_back(std::move(packed.about));
    m_Work->pictures.push_back(std::move(picture));
    if (m_Work->firstName.empty()) m_Work->firstName = name;
}

void Page::AddSlices(SliceFile const& file) {
    if (file.LayerCount() == 0)
        throw Error(ErrorKind::kContent, file.Path(), "the file has no layers to show");
    SliceHeader const& header = file.Header();
    std::string about = std::string(NameOf(header.mode)) + ", units " + Rounded(header.units) +
                        " mm, version " + Rounded(header.version / 100.0);
    for (std::string const& note : file.Report().notes) about += "; " + note;
    Slices list{TextOf(file.Path().filename()), about, {}, {}};
    Watch watch(m_Work->settings.progress);
    for (std::int64_t number = 1; number <= file.LayerCount(); ++number) {
        list.Add(file.LayerAt(number));
        watch.Tell(static_cast<double>(number) / static_cast<double>(file.LayerCount()));
    }
    if (m_Work->firstName.empty()) m_Work->firstName = list.name;
    m_Work->slices.push_back(std::move(list));
}

void Page::BeginSlices(std::string const& name, std::string const& about) {
    m_Work->slices.push_back({name, about, {}, {}});
    if (m_Work->firstName.empty()) m_Work->firstName = name;
}

void Page::AddLayer(Layer const& layer) {
    if (m_Work->slices.empty())
        throw Error(ErrorKind::kArgument, "a layer was added before a list of layers was begun");
    m_Work->slices.back().Add(layer);
}

std::size_t Page::PartCount() const { return m_Work->parts.size(); }

std::size_t Page::LayerCount() const {
    std::size_t count = 0;
    for (Slices const& list : m_Work->slices) count += list.packer.Layers().size();
    return count;
}

std::string Page::Html() const {
    std::string html;
    m_Work->Emit([&html](std::string_view text) { html += text; });
    return html;
}

void Page::Write(std::filesystem::path const& path) const {
    OutputFile file(path);
    m_Work->Emit([&file](std::string_view text) { file.Write(text); });
    file.Commit();
}

}  // namespace varnet
