// Value types: composition of names, and the calendar rule of ages.
#include "qvr/model/dcmValues.h"

#include <array>
#include <utility>

#include "qvr/platform/detail/guard.h"
#include "qvr/platform/detail/numbers.h"

dcmObject::~dcmObject() = default;

// Made at its first use and never destroyed, so that names can be composed as long as the process lives.
CString& dcmPersonName::separater() {
    static CString& g_csSeparater = *new CString("^");
    return g_csSeparater;
}

dcmPersonName::dcmPersonName() = default;
dcmPersonName::~dcmPersonName() = default;

dcmPersonName::dcmPersonName(const char* family, const char* given, const char* middle, const char* prefix,
                             const char* suffix) {
    SetPersonName(family, given, middle, prefix, suffix);
}

dcmPersonName::dcmPersonName(const dcmPersonName& other) {
    *this = other;
}

dcmPersonName& dcmPersonName::operator=(const dcmPersonName& other) {
    qvr::guarded([&] {
        dcmPersonName copy;
        copy.m_FamilyName = other.m_FamilyName;
        copy.m_GivenName = other.m_GivenName;
        copy.m_MiddleName = other.m_MiddleName;
        copy.m_NamePrefix = other.m_NamePrefix;
        copy.m_NameSuffix = other.m_NameSuffix;
        copy.m_PersonName = other.m_PersonName;
        swap(copy);
    });
    return *this;
}

void dcmPersonName::swap(dcmPersonName& other) noexcept {
    std::swap(m_FamilyName, other.m_FamilyName);
    std::swap(m_GivenName, other.m_GivenName);
    std::swap(m_MiddleName, other.m_MiddleName);
    std::swap(m_NamePrefix, other.m_NamePrefix);
    std::swap(m_NameSuffix, other.m_NameSuffix);
    std::swap(m_PersonName, other.m_PersonName);
}

void dcmPersonName::SetPersonName(const char* family, const char* given, const char* middle,
                                  const char* prefix, const char* suffix) {
    compose(family, given, middle, prefix, suffix);
}

bool dcmPersonName::compose(const char* family, const char* given, const char* middle, const char* prefix,
                            const char* suffix) {
    return qvr::guarded(false, [&] {
        std::array<CString, 5> parts{family, given, middle, prefix, suffix};
        std::size_t first = parts.size();
        std::size_t last = 0;
        for (std::size_t i = 0; i < parts.size(); ++i) {
            if (parts[i].Trim().IsEmpty()) continue;
            if (first == parts.size()) first = i;
            last = i;
        }
        CString composed;
        for (std::size_t i = first; i <= last && first < parts.size(); ++i) {
            if (i > first) composed += separater();
            composed += parts[i];
        }
        m_FamilyName = std::move(parts[0]);
        m_GivenName = std::move(parts[1]);
        m_MiddleName = std::move(parts[2]);
        m_NamePrefix = std::move(parts[3]);
        m_NameSuffix = std::move(parts[4]);
        m_PersonName = std::move(composed);
        return true;
    });
}

void dcmPersonName::SetSeparater(const char* separator) {
    qvr::guarded([&] { separater() = separator; });
}

dcmAgeString::dcmAgeString() : m_PatientBirthDate(COleDateTime::GetCurrentTime()) {}
dcmAgeString::~dcmAgeString() = default;

dcmAgeString::dcmAgeString(COleDateTime birthDate) : m_PatientBirthDate(birthDate) {
    GenerateAgeString();
}

dcmAgeString::dcmAgeString(const dcmAgeString& other) : dcmObject(other) {
    *this = other;
}

dcmAgeString& dcmAgeString::operator=(const dcmAgeString& other) {
    qvr::guarded([&] {
        CString age = other.m_AgeString;
        m_AgeString = std::move(age);
        m_PatientBirthDate = other.m_PatientBirthDate;
    });
    return *this;
}

void dcmAgeString::SetPatientBirthDate(COleDateTime birthDate) {
    m_PatientBirthDate = birthDate;
    m_AgeString.Empty();
    GenerateAgeString();
}

namespace {

// Calendar days from one date to another, whatever the time of day.
int daysBetween(const COleDateTime& from, const COleDateTime& to) {
    const COleDateTime first(from.GetYear(), from.GetMonth(), from.GetDay(), 0, 0, 0);
    const COleDateTime last(to.GetYear(), to.GetMonth(), to.GetDay(), 0, 0, 0);
    return qvr::toInt((last - first).GetDays());
}

}  // namespace

int dcmAgeString::GenerateAgeString() {
    const COleDateTime today = COleDateTime::GetCurrentTime();
    const bool datesKnown =
        m_PatientBirthDate.GetStatus() == COleDateTime::valid && today.GetStatus() == COleDateTime::valid;
    const int days = datesKnown ? daysBetween(m_PatientBirthDate, today) : 0;
    if (days < 0) return 0;

    // Years of 365 days, months of 30: leap days are not taken into account.
    const int years = qvr::toInt(days * 0.0027397260273972603);
    const int rest = days % 365;
    const int months = 12 * years + rest / 30;
    const int weeks = 52 * years + rest % 30 / 7;
    return qvr::guarded(0, [&] {
        CString age;
        if (years >= 1) {
            age.Format("%.3dY", years);
        } else if (months > 0) {
            age.Format("%.3dM", months);
        } else if (weeks > 0) {
            age.Format("%.3dW", weeks);
        } else if (days > 0) {
            age.Format("%.3dD", days);
        }
        m_AgeString = std::move(age);
        return 1;
    });
}

dcmCode::dcmCode() = default;
dcmCode::~dcmCode() = default;

dcmCode::dcmCode(const char* value, const char* meaning, const char* designator, const char* version) {
    assign(value, meaning, designator, version);
}

dcmCode::dcmCode(const dcmCode& other) : dcmObject(other) {
    *this = other;
}

dcmCode& dcmCode::operator=(const dcmCode& other) {
    assign(other.m_CodeValue, other.m_CodeMeaning, other.m_CodingSchemeDesignator,
           other.m_CodingSchemeVersion);
    return *this;
}

bool dcmCode::assign(const char* value, const char* meaning, const char* designator, const char* version) {
    return qvr::guarded(false, [&] {
        std::array<CString, 4> texts{value, meaning, designator, version};
        m_CodeValue = std::move(texts[0]);
        m_CodeMeaning = std::move(texts[1]);
        m_CodingSchemeDesignator = std::move(texts[2]);
        m_CodingSchemeVersion = std::move(texts[3]);
        return true;
    });
}
