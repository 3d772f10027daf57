// Value types and passive records: every field in its place, copies that stand alone.
#include "qvr/model/dcmValues.h"

#include <gtest/gtest.h>

#include <limits>

#include "listed.h"
#include "qvr/model/dcmEquipment.h"
#include "qvr/model/dcmProtocol.h"
#include "qvr/model/dcmWorklist.h"

namespace {

// --- person name --------------------------------------------------------------------------------------------------

struct Name {
    const char* name;
    const char* parts[5];
    const char* expected;
};

TEST(NameTest, IsComposedFromTheFirstToTheLastPart) {
    const Name rows[] = {
        {"abcde", {"A", "B", "C", "D", "E"}, "A^B^C^D^E"},
        {"ae", {"A", "", "", "", "E"}, "A^^^^E"},
        {"b", {"", "B", "", "", ""}, "B"},
        {"de", {"", "", "", "D", "E"}, "D^E"},
        {"none", {"", "", "", "", ""}, ""},
        {"null", {nullptr, "B", nullptr, nullptr, nullptr}, "B"},
        {"trimmed", {" \t\r\n\v\fSmith ", "", "", "", "\tJr\n"}, "Smith^^^^Jr"},
        {"innerBlanksStay", {"van der Berg", "", "", "", ""}, "van der Berg"},
        {"bytesAbove127Stay", {"\xC2\xA0Zo\xC3\xAB\xC2\x85", "", "", "", ""}, "\xC2\xA0Zo\xC3\xAB\xC2\x85"}};
    for (const Name& row : rows) {
        SCOPED_TRACE(row.name);
        const auto& part = row.parts;
        const dcmPersonName made(part[0], part[1], part[2], part[3], part[4]);
        EXPECT_STREQ(made.GetPersonName(), row.expected);
        dcmPersonName set("before", "before", "before", "before", "before");
        set.SetPersonName(part[0], part[1], part[2], part[3], part[4]);
        EXPECT_STREQ(set.GetPersonName(), row.expected);
    }
}

TEST(PersonName, SeparatorIsThatOfTheMomentOfComposing) {
    const dcmPersonName before("A", "B", "", "", "");
    for (const auto& [separator, expected] : {std::pair{",", "A,,B"},
                                              {"", "AB"},
                                              {" - ", "A -  - B"},
                                              {static_cast<const char*>(nullptr), "AB"}}) {
        dcmPersonName::SetSeparater(separator);
        EXPECT_STREQ(dcmPersonName("A", "", "B", "", "").GetPersonName(), expected);
        EXPECT_STREQ(before.GetPersonName(), "A^B");
        EXPECT_STREQ(dcmPersonName(before).GetPersonName(), "A^B");  // copied, not composed again
    }
    dcmPersonName::SetSeparater("^");
    EXPECT_STREQ(dcmPersonName("A", "B", "", "", "").GetPersonName(), "A^B");
}

TEST(PersonName, CopiesStandAloneAndOwnTextMayBeAnArgument) {
    dcmPersonName source("A", "B", "", "", "");
    const dcmPersonName copy(source);
    dcmPersonName assigned("X", "", "", "", "");
    assigned = source;
    source.SetPersonName(source.GetPersonName(), source.GetPersonName(), "", "", "");
    EXPECT_STREQ(source.GetPersonName(), "A^B^A^B");
    EXPECT_STREQ(copy.GetPersonName(), "A^B");
    EXPECT_STREQ(assigned.GetPersonName(), "A^B");
    EXPECT_STREQ((source = source).GetPersonName(), "A^B^A^B");
}

// --- age string ---------------------------------------------------------------------------------------------------

// Does something with today's date, again when midnight passed meanwhile.
template <class Check>
void today(Check&& check) {
    for (;;) {
        const COleDateTime now = COleDateTime::GetCurrentTime();
        const std::string result = check(COleDateTime(now.GetYear(), now.GetMonth(), now.GetDay(), 0, 0, 0));
        if (COleDateTime::GetCurrentTime().GetDay() != now.GetDay()) continue;
        EXPECT_EQ(result, "");
        return;
    }
}

struct Age {
    const char* name;
    int days;
    const char* expected;
};

TEST(AgeTest, CountsCalendarDays) {
    const Age rows[] = {{"tomorrow", -1, ""},      {"today", 0, ""},
                        {"d6", 6, "006D"},         {"d7", 7, "001W"},
                        {"d29", 29, "004W"},       {"d30", 30, "001M"},
                        {"d364", 364, "012M"},     {"d365", 365, "001Y"},
                        {"d730", 730, "002Y"},     {"d40y", 40 * 365 - 1, "039Y"},
                        {"y1000", 365000, "1000Y"}};
    for (const Age& row : rows) {
        SCOPED_TRACE(row.name);
        for (const double hour :
             {0.0, 0.5, 0.9999})  // the time of birth does not count, nor does that of today
            today([&](const COleDateTime& midnight) -> std::string {
                const dcmAgeString made(midnight - COleDateTimeSpan(row.days - hour));
                dcmAgeString set(midnight - COleDateTimeSpan(5000));
                set.SetPatientBirthDate(midnight - COleDateTimeSpan(row.days - hour));
                const std::string found = std::string(made.GetAgeString()) + '|' + set.GetAgeString();
                const std::string expected = std::string(row.expected) + '|' + row.expected;
                return found == expected ? "" : found;
            });
    }
}

TEST(AgeString, IsEmptyWhereThereIsNone) {
    EXPECT_STREQ(dcmAgeString().GetAgeString(), "");
    COleDateTime unknown(2000, 1, 1, 0, 0, 0);
    unknown.SetStatus(COleDateTime::null);
    for (const COleDateTime& date : {COleDateTime(2001, 2, 29, 0, 0, 0), unknown,
                                     COleDateTime(std::numeric_limits<double>::quiet_NaN())})
        EXPECT_STREQ(dcmAgeString(date).GetAgeString(), "");
}

// --- codes and records --------------------------------------------------------------------------------------------

std::string listedCode(const dcmCode& c) {
    return listed(c.GetCodeValue(), c.GetCodeMeaning(), c.GetCodingSchemeDesignator(),
                  c.GetCodingSchemeVersion());
}

TEST(Code, CopiesStandAlone) {
    EXPECT_EQ(listedCode(dcmCode()), listed("", "", "", ""));
    dcmCode source("v", "m", "d", "s");
    const dcmCode copy(source);
    dcmCode assigned;
    assigned = source;
    source = dcmCode("w", nullptr, source.GetCodeValue(), "x");
    EXPECT_EQ(listedCode(source), "w  v x ");
    EXPECT_EQ(listedCode(copy), "v m d s ");
    EXPECT_EQ(listedCode(assigned), "v m d s ");
}

std::string listedProtocol(const dcmProtocol& p) {
    return listed(p.GetRelatedCodeValue(), p.GetRelatedCodeMeaning(), p.GetRelatedCodingDesignator(),
                  p.GetRelatedCodingVersion(), p.GetRelatedProcName(), p.GetRelatedProcDesc(),
                  p.GetProtocolIndex(), p.GetAnatomyName(), p.GetProjectionName(), p.IsHMirror(),
                  p.IsVMirror(), p.GetRotateSetting(), p.IsInvert(), p.IsAutoEnhancement(), p.IsDefault(),
                  p.GetReceptor(), p.GetBodySize(), p.GetGrid(), p.GetKVP(), p.GetMA(), p.GetMAS(), p.GetMS(),
                  p.GetFocalSpot(), p.IsAECOn(), p.IsAEC0(), p.IsAEC1(), p.IsAEC2(), p.IsAEC3(), p.IsAEC4(),
                  p.GetAECDensity(), p.GetAECSensitivity(), p.GetIPParam0(), p.GetIPParam1(), p.GetIPParam2(),
                  p.GetIPParam3(), p.GetIPParam4(), p.GetIPParam5(), p.GetIPParam6(), p.GetIPParam7(),
                  p.GetIPParam8(), p.IsDefaultParam(), p.GetThumbFilePath());
}

TEST(Protocol, KeepsEveryValueOfItsRecord) {
    EXPECT_EQ(listedProtocol(dcmProtocol(nullptr)), listedProtocol(dcmProtocol()));
    const QVR_ST_PROTOCOL record{"t1", "t2", "t3", "t4", "t5", "t6", -7, "t8", "t9", -10,  11,
                                 -12,  13,   14,   15,   16,   17,   18, 81.5, 20.5, 21.5, 22.5,
                                 23,   24,   25,   26,   27,   28,   29, -30,  31,   32,   33,
                                 34,   35,   36,   37,   38,   39,   40, 41,   "t42"};
    const dcmProtocol protocol(&record), copy(protocol);
    dcmProtocol assigned;
    assigned = copy;
    for (const dcmProtocol* each : {&protocol, &copy, &static_cast<const dcmProtocol&>(assigned)})
        EXPECT_EQ(
            listedProtocol(*each),
            "t1 t2 t3 t4 t5 t6 -7 t8 t9 -10 11 -12 13 14 15 16 17 18 81.5 20.5 21.5 22.5 23 24 25 26 27 "
            "28 29 -30 31 32 33 34 35 36 37 38 39 40 41 t42 ");
}

// A value goes where its name says: each setter changes one value, the one at its place in the list.
TEST(Protocol, SettersReachTheirValues) {
    using P = dcmProtocol;
    P protocol;
    int value = 100;
    for (const auto set :
         {&P::SetReceptor, &P::SetBodySize, &P::SetGrid,     &P::SetAECOn,    &P::SetAEC0,
          &P::SetAEC1,     &P::SetAEC2,     &P::SetAEC3,     &P::SetAEC4,     &P::SetAECDensity,
          &P::SetIPParam0, &P::SetIPParam1, &P::SetIPParam2, &P::SetIPParam3, &P::SetIPParam4,
          &P::SetIPParam5, &P::SetIPParam6, &P::SetIPParam7, &P::SetIPParam8, &P::SetDefaultParam})
        (protocol.*set)(value++);
    protocol.SetKVP(0.1), protocol.SetMA(0.2), protocol.SetMAS(0.3), protocol.SetMS(0.4);
    EXPECT_EQ(
        listedProtocol(protocol),
        "      -1   0 0 0 0 0 0 100 101 102 0.1 0.2 0.3 0.4 0 103 104 105 106 107 108 109 0 110 111 112 "
        "113 114 115 116 117 118 119  ");
}

std::string listedWorklist(const dcmWorklist& w) {
    return listed(w.GetScource(), w.GetWorklistIndex(), w.GetStatus(), w.GetSPSAETitle(),
                  w.GetSPSStartDateTime(), w.GetModality(), w.GetSPSPerformingPhysician(),
                  w.GetReferringPhysician(), w.GetSPSDescription(), w.GetSPSStationName(), w.GetSPSID(),
                  w.GetCommentsOnSPS(), w.GetReqProcID(), w.GetReqProcDescription(), w.GetStudyInstanceUID(),
                  w.GetAccessionNumber(), w.GetPatientName(), w.GetPatientID(), w.GetPatientBirthDate(),
                  w.IsPatientBirthDateValid(), w.GetPatientSex(), w.GetOtherPatientID(),
                  w.GetOtherPatientName(), w.GetPatientSpeciesDescription(), w.GetPatientSexNeutered(),
                  w.GetPatientBreedDescription(), w.GetMedicalRecordLocator(),
                  w.GetAdmittingDiagnosesDescription());
}

TEST(Worklist, KeepsRecordAndCodes) {
    dcmWorklist entry;
    EXPECT_LT(std::abs(age(entry.GetPatientBirthDate())), kMoment);
    entry.SetReqProcCode("a", "b", "c", "d");
    entry.AddSPSCode("1", "2", "3", "4");
    entry.AddSPSCode("", nullptr, "", "");
    entry.SetReqProcCode("e", "f", "g", entry.GetReqProcCode().GetCodeValue());
    const COleDateTime start(5.5), birth(19.0);
    const QVR_ST_WORKLIST record{1,     2,     3,     "t4",  start, "t6",  "t7",  "t8",  "t9",  "t10",
                                 "t11", "t12", "t13", "t14", "t15", "t16", "t17", "t18", birth, 20,
                                 "t21", "t22", "t23", "t24", "t25", "t26", "t27", "t28"};
    EXPECT_EQ(entry.Create(&record), 1);
    EXPECT_EQ(entry.Create(nullptr), 0);
    EXPECT_EQ(listedWorklist(entry),
              "1 2 3 t4 5.5 t6 t7 t8 t9 t10 t11 t12 t13 t14 t15 t16 t17 t18 19 20 "
              "t21 t22 t23 t24 t25 t26 t27 t28 ");
    EXPECT_EQ(listedCode(entry.GetReqProcCode()), "e f g a ");
    ASSERT_EQ(entry.GetSPSCodeCount(), 2);
    dcmCode out("o", "u", "t", "!");
    for (const int index : {-1, 2}) EXPECT_EQ(entry.GetSPSCode(index, out), 0);
    EXPECT_EQ(listedCode(out), "o u t ! ");
    EXPECT_EQ(entry.GetSPSCode(1, out), 1);
    EXPECT_EQ(listedCode(out), listedCode(dcmCode()));
}

TEST(Equipment, KeepsEveryValueOfItsRecord) {
    dcmEquipment e;
    const QVR_ST_EQUIPMENT record{"t1", "t2", "t3", "t4", "t5", "t6", "t7", -8, 9};
    EXPECT_EQ(e.Create(&record), 1);
    EXPECT_EQ(e.Create(nullptr), 0);
    const dcmEquipment copy(e);
    e = dcmEquipment();
    EXPECT_STREQ(e.GetManufacturer(), "");
    e = copy;
    EXPECT_EQ(listed(e.GetManufacturer(), e.GetInstitutionName(), e.GetInstitutionAddress(),
                     e.GetStationName(), e.GetManufacturerModelName(), e.GetDeviceSerialNumber(),
                     e.GetSoftwareVersion(), e.GetDeviceNumber(), e.GetSerialNumber()),
              "t1 t2 t3 t4 t5 t6 t7 -8 9 ");
}

TEST(AgeString, CopiesStandAlone) {
    dcmAgeString source(COleDateTime::GetCurrentTime() - COleDateTimeSpan(800));
    const dcmAgeString copy(source);
    dcmAgeString assigned;
    assigned = source;
    source.SetPatientBirthDate(COleDateTime::GetCurrentTime());
    EXPECT_STREQ(copy.GetAgeString(), "002Y");
    EXPECT_STREQ(assigned.GetAgeString(), "002Y");
}

}  // namespace
