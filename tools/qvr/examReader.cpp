// Reading the exam file. Every sentence names the place of what is wrong: "studies[0].series[2].image.rows".
#include <fmt/format.h>

#include <cstdio>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>

#include "errors.h"
#include "examFields.h"
#include "examFile.h"
#include "sourceReader.h"

namespace qvr::tool {

namespace {

using Json = nlohmann::json;

constexpr int kLargestSide = 32767;
constexpr std::size_t kMostMarks = 3;
constexpr int kBits = 14;

// A value of the file, its place, and the file's name.
class Node {
public:
    Node(const std::string& file, const Json& json, std::string place)
        : m_file(file), m_json(json), m_place(std::move(place)) {}

    [[noreturn]] void wrong(const std::string& why) const {
        throw Failure(Exit::unreadable, m_file, "not read",
                      fmt::format("{}: {}", m_place.empty() ? "exam file" : m_place, why));
    }
    [[noreturn]] void refuse(const std::string& why) const {
        throw Failure(Exit::refused, m_file, "refused", fmt::format("{}: {}", m_place, why));
    }

    Node at(const char* name) const {
        if (!m_json.is_object()) wrong("an object is expected");
        const auto found = m_json.find(name);
        Node below{m_file, m_json, m_place.empty() ? name : m_place + '.' + name};
        if (found == m_json.end()) below.wrong("missing");
        return {m_file, *found, below.m_place};
    }
    bool has(const char* name) const { return m_json.is_object() && m_json.contains(name); }
    std::vector<Node> list() const {
        if (!m_json.is_array()) wrong("a list is expected");
        std::vector<Node> nodes;
        for (std::size_t i = 0; i < m_json.size(); ++i)
            nodes.emplace_back(m_file, m_json[i], fmt::format("{}[{}]", m_place, i));
        return nodes;
    }
    bool isNull() const { return m_json.is_null(); }

    std::string text() const {
        if (!m_json.is_string()) wrong("a text is expected");
        const auto& value = m_json.get_ref<const std::string&>();
        if (value.find('\0') != std::string::npos) wrong("a text must not contain U+0000");
        return value;
    }
    std::uint64_t count() const {
        if (!m_json.is_number_unsigned()) wrong("a whole number of 0 or more is expected");
        return m_json.get<std::uint64_t>();
    }
    int integer(int lowest = std::numeric_limits<int>::min(),
                int highest = std::numeric_limits<int>::max()) const {
        const bool large = m_json.is_number_unsigned() &&
                           m_json.get<std::uint64_t>() > std::uint64_t{std::numeric_limits<int>::max()};
        if (!m_json.is_number_integer()) wrong("a whole number is expected");
        const auto value = large ? std::numeric_limits<std::int64_t>::max() : m_json.get<std::int64_t>();
        if (value < lowest || value > highest)
            wrong(fmt::format("{} is not in {}..{}", m_json.dump(), lowest, highest));
        return static_cast<int>(value);
    }
    double number() const {
        if (!m_json.is_number()) wrong("a number is expected");
        return m_json.get<double>();
    }
    COleDateTime date() const {
        COleDateTime none;
        none.SetStatus(COleDateTime::null);
        if (m_json.is_null()) return none;
        const std::string value = text();
        int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
        std::sscanf(value.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d", &year, &month, &day, &hour, &minute, &second);
        const COleDateTime read(year, month, day, hour, minute, second);
        if (read.GetStatus() != COleDateTime::valid || dateText(read) != value)
            wrong("a date as in 2024-05-31T14:30:00 is expected");
        return read;
    }

private:
    const std::string& m_file;
    const Json& m_json;
    std::string m_place;
};

// Fills each member that it is called for from an object.
struct Take {
    const Node& node;
    void operator()(const char* name, CString& value) { value = node.at(name).text().c_str(); }
    void operator()(const char* name, std::string& value) { value = node.at(name).text(); }
    void operator()(const char* name, int& value) { value = node.at(name).integer(); }
    void operator()(const char* name, double& value) { value = node.at(name).number(); }
    void operator()(const char* name, COleDateTime& value) { value = node.at(name).date(); }
};

struct TakeIfAny {
    const Node& node;
    void operator()(const char* name, std::string& value) {
        if (node.has(name)) value = node.at(name).text();
    }
};

PixelHistory historyOf(const Node& node) {
    PixelHistory history;
    visitHistoryIfAny(history, TakeIfAny{node});
    const auto check = [&](const char* name, const std::string& value, const char* one, const char* other) {
        if (value.empty() || value == one || value == other) return;
        node.at(name).wrong(fmt::format("{} or {} is expected", one, other));
    };
    check("burned_in_annotation", history.burnedIn, "YES", "NO");
    check("lossy_image_compression", history.lossy, "00", "01");
    return history;
}

void checkPixels(const Node& node, int columns, int rows) {
    try {
        checkSize("", columns, rows);
    } catch (const Failure&) {
        node.wrong(fmt::format("{} x {} pixels cannot be", columns, rows));
    }
}

PixelFileRecord pixelFile(const Node& node) {
    PixelFileRecord file;
    file.columns = node.at("columns").integer();
    file.rows = node.at("rows").integer();
    checkPixels(node, file.columns, file.rows);
    if (node.at("bytes").count() != file.bytes())
        node.at("bytes").wrong(
            fmt::format("{} x {} pixels have {} bytes", file.columns, file.rows, file.bytes()));
    const std::string sum = node.at("crc32").text();
    if (sum.size() != 8 || sum.find_first_not_of("0123456789abcdef") != std::string::npos)
        node.at("crc32").wrong("eight digits 0-9, a-f are expected");
    file.checksum = static_cast<std::uint32_t>(std::stoul(sum, nullptr, 16));
    return file;
}

std::vector<MarkRecord> marksOf(const Node& node) {
    std::vector<MarkRecord> marks;
    for (const auto& entry : node.list()) {
        MarkRecord mark;
        visitMark(mark, Take{entry});
        if (mark.fontHeight != 30 && mark.fontHeight != 40 && mark.fontHeight != 50)
            entry.at("font_height").wrong("30, 40 or 50 is expected");
        marks.push_back(std::move(mark));
    }
    if (marks.size() > kMostMarks) node.wrong(fmt::format("an image holds {} marks at most", kMostMarks));
    return marks;
}

ImageRecord imageOf(const Node& node) {
    ImageRecord image;
    auto& attributes = image.attributes;
    visitImage(attributes, Take{node});
    visitDisplay(image, Take{node});
    image.history = historyOf(node);
    checkPixels(node, attributes.Width, attributes.Height);
    node.at("bits_stored").integer(kBits, kBits);
    node.at("high_bit").integer(kBits - 1, kBits - 1);
    image.marks = marksOf(node.at("marks"));
    image.rawCopy = pixelFile(node.at("raw_copy"));
    attributes.BAKWidth = image.rawCopy.columns;
    attributes.BAKHeight = image.rawCopy.rows;
    if (!node.at("image_file").isNull()) image.imageFile = pixelFile(node.at("image_file"));
    const auto& file = image.imageFile ? *image.imageFile : image.rawCopy;
    if (file.columns != attributes.Width || file.rows != attributes.Height)
        node.wrong(fmt::format("{} x {} pixels in a file of {} x {}", attributes.Width, attributes.Height,
                               file.columns, file.rows));
    return image;
}

StudyRecord studyOf(const Node& node, std::set<std::string>& uids) {
    StudyRecord study;
    const std::string kind = node.at("kind").text();
    if (kind != "CR" && kind != "DX") node.at("kind").wrong("CR or DX is expected");
    study.modality = kind == "CR" ? dcmStudy::CR : dcmStudy::DX;
    visitStudy(study.attributes, Take{node});
    visitNameIfAny(study, TakeIfAny{node});
    for (const auto& entry : node.at("series").list()) {
        SeriesRecord series;
        visitSeries(series.attributes, Take{entry});
        const Node image = entry.at("image");
        series.image = imageOf(image);
        const Node uid = image.at("sop_instance_uid");
        if (const auto reason = unusableInExam(uid.text()); !reason.empty())
            uid.refuse(fmt::format("\"{}\" {}, so it cannot name a file", uid.text(), reason));
        if (!uids.insert(uid.text()).second) uid.refuse(fmt::format("\"{}\" occurs twice", uid.text()));
        study.series.push_back(std::move(series));
    }
    return study;
}

}  // namespace

ExamRecord parseExam(const std::string& file, std::span<const std::uint8_t> bytes) {
    const Json json = bytes.size() > kLargestExamFile
                          ? Json(Json::value_t::discarded)
                          : Json::parse(bytes.begin(), bytes.end(), nullptr, false);
    const Node root(file, json, "");
    if (json.is_discarded()) root.wrong("it is no JSON text, or cut short");
    if (root.at("format").text() != "qvr-exam") root.at("format").wrong("\"qvr-exam\" is expected");
    if (root.at("version").count() != 1)
        throw Failure(
            Exit::unsupported, file, "not read",
            fmt::format("it has version {}, this program reads version 1", root.at("version").count()),
            "Use a newer qvr.");
    ExamRecord exam;
    exam.display.cx = root.at("display").at("width").integer(1, kLargestSide);
    exam.display.cy = root.at("display").at("height").integer(1, kLargestSide);
    std::set<std::string> uids;
    for (const auto& study : root.at("studies").list()) exam.studies.push_back(studyOf(study, uids));
    return exam;
}

}  // namespace qvr::tool
