#include "Report.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "Console.h"

void Report::Add(std::string const& label, char const* key, long long count) {
    Add(label, key, count, Count(count));
}

void Report::Add(std::string const& label, char const* key, double number) {
    // JSON has no word for what is not finite.
    Add(label, key, std::isfinite(number) ? nlohmann::json(number) : nlohmann::json(nullptr), Number(number));
}

void Report::Add(std::string const& label, char const* key, std::string const& text) {
    Add(label, key, text, text);
}

void Report::Add(std::string const& label, char const* key, nlohmann::json value, std::string const& text) {
    m_Rows.emplace_back(label, text);
    m_Json[key] = std::move(value);
}

void Report::Print(bool asJson, bool toError) const {
    if (asJson) {
        PrintJson(m_Json, toError);
        return;
    }
    ClearBar();
    std::FILE* const stream = toError ? stderr : stdout;
    std::size_t width = 0;
    for (auto const& [label, text] : m_Rows) width = std::max(width, label.size());
    std::fprintf(stream, "%s\n", m_Title.c_str());
    for (auto const& [label, text] : m_Rows) {
        std::fprintf(stream, "  %-*s  %s\n", static_cast<int>(width), label.c_str(), text.c_str());
    }
}

void PrintJson(nlohmann::json json, bool toError) {
    ClearBar();
    json["schema"] = 1;
    std::fprintf(toError ? stderr : stdout, "%s\n",
                 json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
}

std::string Count(long long count) {
    std::string text = std::to_string(count);
    std::size_t const first = text[0] == '-' ? 1 : 0;
    for (std::size_t i = text.size(); i > first + 3;) {
        i -= 3;
        text.insert(i, 1, ',');
    }
    return text;
}

std::string Number(double value) { return Rounded(value, 10); }

std::string Rounded(double value, int digits) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.*g", digits, value);
    return text.data();
}
