// The exam file comes from a disk: everything that can be wrong in it ends in one sentence that names the place.
#include <gtest/gtest.h>

#include <functional>
#include <nlohmann/json.hpp>

#include "errors.h"
#include "examMaker.h"
#include "support/pictures.h"

namespace qvr::tool {
namespace {

using Json = nlohmann::json;

ExamRecord sample() {
    ExamRecord exam;
    exam.studies.resize(2);
    exam.studies[0].modality = dcmStudy::CR;
    for (int number = 1; number <= 2; ++number) {
        const auto records = recordsOf(number);
        exam.studies[0].attributes = records.study;
        SeriesRecord series{records.series, {}};
        series.image.attributes = records.image;
        series.image.attributes.Width = 67;
        series.image.attributes.Height = 45;
        series.image.attributes.BitsStored = 14;
        series.image.attributes.HighBit = 13;
        series.image.rawCopy = {67, 45, 0xdeadbeefU};
        exam.studies[0].series.push_back(series);
    }
    exam.studies[0].series[1].image.imageFile = PixelFileRecord{67, 45, 7};
    exam.studies[0].patientName = "Doe^John=\xe5\xb1\xb1";
    exam.studies[0].series[1].image.history = {"YES", "01", "9.5\\3", "ISO_10918_1\\ISO_14495_1"};
    exam.studies[0].series[1].image.marks = {{"\xe5\xb7\xa6 \"L\"", 40, -3, 1000}};
    return exam;
}

ExamRecord parse(const std::string& text) {
    return parseExam("exam.json", {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

TEST(ExamFile, IsReadAsItWasWritten) {
    ExamRecord exam = sample();
    exam.studies[0].attributes.Status = -7;
    exam.studies[0].attributes.PatientBirthDate.SetStatus(COleDateTime::null);
    const std::string text = toText(exam);
    ExamRecord read = parse(text);
    EXPECT_EQ(toText(read), text);
    EXPECT_EQ(read.studies[0].attributes.StudyDateTime, COleDateTime(2024, 5, 31, 14, 30, 7));
    EXPECT_EQ(read.studies[0].attributes.PatientBirthDate.GetStatus(), COleDateTime::null);
    EXPECT_EQ(read.studies[0].series[1].image.marks[0].text, "\xe5\xb7\xa6 \"L\"");
    EXPECT_EQ(read.studies[0].series[1].image.attributes.BAKWidth, 67);
    EXPECT_EQ(read.studies[0].patientName, "Doe^John=\xe5\xb1\xb1");
    const auto& history = read.studies[0].series[1].image.history;
    EXPECT_EQ(history.burnedIn + '|' + history.lossy + '|' + history.lossyRatio + '|' + history.lossyMethod,
              "YES|01|9.5\\3|ISO_10918_1\\ISO_14495_1");
}

TEST(ExamFile, ReplacesWhatIsNoUtf8) {
    ExamRecord exam = sample();
    exam.studies[0].attributes.PatientFamilyName = "M\xfcller";
    EXPECT_STREQ(parse(toText(exam)).studies[0].attributes.PatientFamilyName, "M\xef\xbf\xbdller");
}

struct WrongCase {
    const char* name;
    const char* place;  // JSON pointer of what is replaced
    const char* value;  // by this, or taken away when null
    Exit code;
    const char* says;
};

constexpr const char* kImage = "studies[0].series[1].image";

TEST(WrongExamTest, IsRefusedWithItsPlace) {
    const WrongCase rows[] = {
        {"otherFormat", "/format", "\"dicom\"", Exit::unreadable, "format"},
        {"laterVersion", "/version", "2", Exit::unsupported, "version 2"},
        {"displayOfNothing", "/display/width", "0", Exit::unreadable, "display.width: 0 is not in 1..32767"},
        {"studiesNoList", "/studies", "{}", Exit::unreadable, "studies: a list is expected"},
        {"kind", "/studies/0/kind", "\"CT\"", Exit::unreadable, "studies[0].kind"},
        {"zeroInText", "/studies/0/patient_id", "\"a\\u0000b\"", Exit::unreadable, "U+0000"},
        {"fieldMissing", "/studies/0/patient_sex", nullptr, Exit::unreadable, "patient_sex: missing"},
        {"noSuchDay", "/studies/0/study_date_time", "\"2023-02-29T00:00:00\"", Exit::unreadable, "a date"},
        {"beyond64Bits", "/studies/0/status", "18446744073709551615", Exit::unreadable, "status"},
        {"noPixels", "/studies/0/series/1/image/rows", "0", Exit::unreadable, "67 x 0"},
        {"hugeImage", "/studies/0/series/1/image/columns", "2147483647", Exit::unreadable, kImage},
        {"otherSizeThanFile", "/studies/0/series/1/image/rows", "44", Exit::unreadable, "67 x 44 pixels in"},
        {"hugeFile", "/studies/0/series/1/image/raw_copy/rows", "99999999", Exit::unreadable, "raw_copy"},
        {"checksum", "/studies/0/series/1/image/raw_copy/crc32", "\"DEADBEEF\"", Exit::unreadable, "crc32"},
        {"markHeight", "/studies/0/series/1/image/marks/0/font_height", "35", Exit::unreadable, "30, 40 or"},
        {"fourMarks", "/studies/0/series/1/image/marks",
         R"([{"text":"","font_height":30,"left":0,"top":0},{"text":"","font_height":30,"left":0,"top":0},
                      {"text":"","font_height":30,"left":0,"top":0},{"text":"","font_height":30,"left":0,"top":0}])",
         Exit::unreadable, "3 marks at most"},
        {"wholeNameNoText", "/studies/0/patient_name", "[]", Exit::unreadable, "patient_name: a text"},
        {"zeroInWholeName", "/studies/0/patient_name", "\"a\\u0000b\"", Exit::unreadable,
         "patient_name: a text"},
        {"burnedNoText", "/studies/0/series/1/image/burned_in_annotation", "true", Exit::unreadable,
         "a text"},
        {"burnedUnknown", "/studies/0/series/1/image/burned_in_annotation", "\"yes\"", Exit::unreadable,
         "burned_in_annotation: YES or NO"},
        {"lossyUnknown", "/studies/0/series/1/image/lossy_image_compression", "\"1\"", Exit::unreadable,
         "00 or 01"},
        {"ratioNoText", "/studies/0/series/1/image/lossy_image_compression_ratio", "9.5", Exit::unreadable,
         "ratio: a text"},
        {"uidLeadsOut", "/studies/0/series/1/image/sop_instance_uid", "\"../../x\"", Exit::refused, "\"/\""},
        {"uidTwice", "/studies/0/series/1/image/sop_instance_uid", "\"1.2.3.1\"", Exit::refused, "twice"}};
    for (const WrongCase& test : rows) {
        SCOPED_TRACE(test.name);
        Json json = Json::parse(toText(sample()));
        const Json::json_pointer pointer(test.place);
        ASSERT_TRUE(json.contains(pointer)) << "the case changes nothing";
        if (test.value)
            json[pointer] = Json::parse(test.value);
        else
            json[pointer.parent_pointer()].erase(pointer.back());
        try {
            parse(json.dump());
            FAIL() << "it was read";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.code(), test.code);
            EXPECT_NE(std::string(failure.what()).find(test.says), std::string::npos) << failure.what();
        }
    }
}

// Every prefix of an exam file: none is read, none does harm.
TEST(ExamFile, IsNotReadWhenItIsCutShort) {
    const std::string text = toText(sample());
    for (std::size_t size = 0; size + 1 < text.size(); ++size)
        EXPECT_THROW(parse(text.substr(0, size)), Failure) << size;
    for (const char* other : {"", "[]", "null", "3", "{}", "[[[[[[[[", "\xff\xfe{", "{\"format\":1e999}"})
        EXPECT_THROW(parse(other), Failure) << other;
    EXPECT_THROW(parse(std::string(200000, '[')), Failure);
}

}  // namespace
}  // namespace qvr::tool
