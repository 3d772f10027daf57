// Marks on the command line. What cannot be drawn in full is refused before anything is read: a mark that is lost could
// be the one that tells left from right.
#include "markRequest.h"

#include <fmt/format.h>

#include <algorithm>

#include "characters.h"
#include "errors.h"
#include "loading.h"
#include "parse.h"

namespace qvr::tool {

namespace {

constexpr double kDisplayWidth = 1000;
constexpr double kDisplayHeight = 800;
constexpr double kDisplayFont = 40;
constexpr int kSmallestHeight = 10;

bool readPlace(std::string_view text, MarkRequest& request) {
    const auto parts = split(text, ',');
    if (parts.size() != 2) return false;
    if (const auto corner = parseInts(text, ',', 2)) {
        request.corner = {(*corner)[0], (*corner)[1]};
        return true;
    }
    using Column = MarkRequest::Column;
    using Row = MarkRequest::Row;
    constexpr std::pair<std::string_view, Column> columns[] = {
        {"left", Column::left}, {"center", Column::center}, {"right", Column::right}};
    constexpr std::pair<std::string_view, Row> rows[] = {{"top", Row::top}, {"bottom", Row::bottom}};
    const auto* column = std::find_if(std::begin(columns), std::end(columns),
                                      [&](const auto& entry) { return entry.first == parts[0]; });
    const auto* row = std::find_if(std::begin(rows), std::end(rows),
                                   [&](const auto& entry) { return entry.first == parts[1]; });
    if (column == std::end(columns) || row == std::end(rows)) return false;
    request.column = column->second;
    request.row = row->second;
    return true;
}

}  // namespace

std::optional<MarkRequest> parseMark(std::string_view text) {
    const auto at = text.rfind('@');
    if (at == std::string_view::npos) return std::nullopt;
    MarkRequest request;
    request.text = text.substr(0, at);
    const bool blank = request.text.find_first_not_of(' ') == std::string::npos;
    if (blank || !readPlace(text.substr(at + 1), request)) return std::nullopt;
    return request;
}

std::optional<MarkHeight> parseMarkHeight(std::string_view text) {
    if (text.size() < 3) return std::nullopt;
    const auto unit = text.substr(text.size() - 2);
    const auto value = parseDouble(text.substr(0, text.size() - 2));
    if (!value || !(*value > 0) || (unit != "mm" && unit != "px")) return std::nullopt;
    return MarkHeight{*value, unit == "mm"};
}

void MarkOptions::declare(CLI::App& app, bool needed, bool withHeight) {
    app.add_option("--mark", m_texts,
                   "text with its place: left, center or right with top or bottom, or the text's top left "
                   "corner in image pixels; up to three")
        ->type_name("TEXT@PLACE")
        ->expected(1)
        ->take_all()
        ->required(needed);
    if (!withHeight) return;
    app.add_option("--mark-height", m_heightText,
                   "height of the marks' line, as in 8mm or 120px; otherwise that of 40 display pixels with "
                   "the image fitted into 1000 x 800")
        ->type_name("HEIGHT");
}

void MarkOptions::check() {
    for (const auto& text : m_texts) {
        const auto request = parseMark(text);
        if (!request) notUnderstood("--mark", text, "Give TEXT@PLACE as in L@left,top or R@1200,80.");
        if (!decodeUtf8(request->text)) notUnderstood("--mark", text, "Its text is not UTF-8.");
        m_requests.push_back(*request);
    }
    if (m_heightText.empty()) return;
    m_height = parseMarkHeight(m_heightText);
    if (!m_height) notUnderstood("--mark-height", m_heightText, "Give a height as in 8mm or 120px.");
}

void MarkOptions::checkDrawable(const std::string& file, const std::string& nothingDone) const {
    if (m_requests.size() > kMostMarks)
        throw Failure(Exit::refused, file,
                      fmt::format("{} marks given, an image holds {}", m_requests.size(), kMostMarks), "",
                      nothingDone);
    for (const auto& request : m_requests) {
        const auto missing = missingCharacter(decodeUtf8(request.text).value());
        if (!missing) continue;
        throw Failure(Exit::refused, file, fmt::format("mark \"{}\"", request.text),
                      fmt::format("no installed font has U+{:04X}", static_cast<std::uint32_t>(*missing)),
                      fontAdvice(*missing));
    }
}

int MarkOptions::heightInPixels(const std::string& file, CSize image,
                                const std::optional<std::pair<double, double>>& spacing) const {
    if (!m_height) {
        const double ratio = std::min(kDisplayWidth / image.cx, kDisplayHeight / image.cy);
        return std::max(kSmallestHeight, truncatedInt(kDisplayFont / ratio + 0.5));
    }
    if (m_height->isMillimetres && !spacing)
        throw Failure(Exit::usage, file, "no mark",
                      "the size of its pixels is not known, so a height in millimetres says nothing",
                      "Give --mark-height in px.");
    const double scale = m_height->isMillimetres ? 1 / spacing->second : 1;
    const int height = truncatedInt(m_height->value * scale + 0.5);
    if (height < kSmallestHeight || height > image.cy)
        throw Failure(Exit::usage, file, "no mark",
                      fmt::format("a height of {} pixels is not between {} and the image's {}", height,
                                  kSmallestHeight, image.cy),
                      "Give another --mark-height.");
    return height;
}

}  // namespace qvr::tool
