// Writing the exam file, and what its records have in common.
#include "examFile.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "examFields.h"
#include "sourceImage.h"

namespace qvr::tool {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kLongestUid = 200;  // with what the cache puts around it, it must stay a file name

Json asJson(const CString& text) {
    return text.GetString();
}
Json asJson(const std::string& text) {
    return text;
}
Json asJson(int value) {
    return value;
}
Json asJson(double value) {
    return value;
}
Json asJson(const COleDateTime& date) {
    return date.GetStatus() == COleDateTime::valid ? Json(dateText(date)) : Json();
}

// Puts each member that it is called for into an object.
struct Put {
    Json& object;
    template <class Value>
    void operator()(const char* name, const Value& value) {
        object[name] = asJson(value);
    }
};

struct PutIfAny {
    Json& object;
    void operator()(const char* name, const std::string& text) {
        if (!text.empty()) object[name] = text;
    }
};

Json asJson(const PixelFileRecord& file) {
    return {{"columns", file.columns},
            {"rows", file.rows},
            {"bytes", file.bytes()},
            {"crc32", fmt::format("{:08x}", file.checksum)}};
}

Json asJson(const ImageRecord& image) {
    Json object;
    visitImage(image.attributes, Put{object});
    visitDisplay(image, Put{object});
    visitHistoryIfAny(image.history, PutIfAny{object});
    object["marks"] = Json::array();
    for (const auto& mark : image.marks) {
        Json entry;
        visitMark(mark, Put{entry});
        object["marks"].push_back(std::move(entry));
    }
    object["raw_copy"] = asJson(image.rawCopy);
    object["image_file"] = image.imageFile ? asJson(*image.imageFile) : Json();
    return object;
}

Json asJson(const StudyRecord& study) {
    Json object = {{"kind", study.modality == dcmStudy::CR ? "CR" : "DX"}};
    visitStudy(study.attributes, Put{object});
    visitNameIfAny(study, PutIfAny{object});
    object["series"] = Json::array();
    for (const auto& series : study.series) {
        Json entry;
        visitSeries(series.attributes, Put{entry});
        entry["image"] = asJson(series.image);
        object["series"].push_back(std::move(entry));
    }
    return object;
}

}  // namespace

std::string dateText(const COleDateTime& date) {
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", date.GetYear(), date.GetMonth(), date.GetDay(),
                       date.GetHour(), date.GetMinute(), date.GetSecond());
}

std::string toText(const ExamRecord& exam) {
    Json object = {{"format", "qvr-exam"},
                   {"version", 1},
                   {"display", {{"width", exam.display.cx}, {"height", exam.display.cy}}},
                   {"studies", Json::array()}};
    for (const auto& study : exam.studies) object["studies"].push_back(asJson(study));
    return object.dump(1, ' ', false, Json::error_handler_t::replace) + '\n';
}

std::vector<ExamImage> imagesOf(ExamRecord& exam) {
    std::vector<ExamImage> images;
    for (std::size_t study = 0; study < exam.studies.size(); ++study) {
        auto& all = exam.studies[study].series;
        for (std::size_t series = 0; series < all.size(); ++series)
            images.push_back({static_cast<int>(study), static_cast<int>(series), &all[series]});
    }
    return images;
}

std::string unusableInExam(const std::string& uid) {
    if (uid.empty()) return "is missing";
    if (auto reason = unusableUidReason(uid); !reason.empty()) return reason;
    if (uid.size() > kLongestUid) return fmt::format("has {} characters", uid.size());
    for (const char c : uid)
        if (static_cast<unsigned char>(c) >= 0x80) return "contains a character that is not ASCII";
    return {};
}

}  // namespace qvr::tool
