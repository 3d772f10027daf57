// Value types of the clinical records: person name, age string, code.
//
// All of them copy by value. A null text is taken as an empty one; a returned text is valid until its object changes.
// When memory ends during a change, the object keeps what it held.
#pragma once

#include "qvr/export.h"
#include "qvr/model/dcmObject.h"
#include "qvr/platform/COleDateTime.h"
#include "qvr/platform/CString.h"

/// A person name of five components, composed into one text with a separator that is common to all names.
class QVR_API dcmPersonName {
public:
    dcmPersonName();
    dcmPersonName(const char* family, const char* given, const char* middle, const char* prefix,
                  const char* suffix);
    /// Copies keep the text as it was composed, with the separator of that moment.
    dcmPersonName(const dcmPersonName&);
    dcmPersonName& operator=(const dcmPersonName& other);
    virtual ~dcmPersonName();

    /// Stores the components without leading and trailing white space and composes the name: the components from the
    /// first to the last that is not empty, joined by the separator.
    void SetPersonName(const char* family, const char* given, const char* middle, const char* prefix,
                       const char* suffix);
    const char* GetPersonName() const { return m_PersonName; }
    /// Sets the separator, at first "^", for names composed from now on. One for the whole process, not guarded.
    static void SetSeparater(const char* separator);

private:
    friend class dcmSeries;
    friend class dcmStudy;

    static CString& separater();
    // SetPersonName that tells whether it happened. False, with the name as it was, when memory ends.
    bool compose(const char* family, const char* given, const char* middle = "", const char* prefix = "",
                 const char* suffix = "");
    void swap(dcmPersonName& other) noexcept;

    CString m_FamilyName;
    CString m_GivenName;
    CString m_MiddleName;
    CString m_NamePrefix;
    CString m_NameSuffix;
    CString m_PersonName;
};

/// A patient's age as DICOM writes it (value representation AS): 012Y, 007M, 003W or 005D. Made when the birth date is
/// set and not refreshed as time passes.
class QVR_API dcmAgeString : public dcmObject {
public:
    /// The birth date is the current date and time; no age is made.
    dcmAgeString();
    explicit dcmAgeString(COleDateTime birthDate);
    dcmAgeString(const dcmAgeString&);
    dcmAgeString& operator=(const dcmAgeString& other);
    ~dcmAgeString() override;

    /// Sets the date and makes the age; empty for a date after today, for today, and for one that is not valid.
    void SetPatientBirthDate(COleDateTime birthDate);
    const char* GetAgeString() const { return m_AgeString; }

protected:
    /// @return 1; 0 for a birth date after today, with the age as it was
    int GenerateAgeString();

private:
    COleDateTime m_PatientBirthDate;
    CString m_AgeString;
};

/// A coded entry: code value, code meaning, coding scheme designator, coding scheme version, always in this order.
class QVR_API dcmCode : public dcmObject {
public:
    dcmCode();
    dcmCode(const char* value, const char* meaning, const char* designator, const char* version);
    dcmCode(const dcmCode&);
    dcmCode& operator=(const dcmCode& other);
    ~dcmCode() override;

    const char* GetCodeValue() const { return m_CodeValue; }
    const char* GetCodeMeaning() const { return m_CodeMeaning; }
    const char* GetCodingSchemeDesignator() const { return m_CodingSchemeDesignator; }
    const char* GetCodingSchemeVersion() const { return m_CodingSchemeVersion; }

private:
    friend class dcmWorklist;

    // Takes all four texts. False, with the code as it was, when memory ends.
    bool assign(const char* value, const char* meaning, const char* designator, const char* version);

    CString m_CodeValue;
    CString m_CodeMeaning;
    CString m_CodingSchemeDesignator;
    CString m_CodingSchemeVersion;
};
