// residency: which images of an examination should be in memory, held against what the exam says.
#pragma once

#include <string>
#include <vector>

#include "qvr/qvr.h"

namespace qvr {

/// The host's own book of the series in memory, oldest first. It follows what the host asks for, never what the exam
/// answers, so that each line of the table is a check.
class Residency {
public:
    explicit Residency(const dcmExam& exam) : m_exam(exam) {}

    void came(int position) { m_expected.push_back(position); }
    void left(int position);
    [[nodiscard]] int oldest() const { return m_expected.front(); }
    [[nodiscard]] int count() const { return static_cast<int>(m_expected.size()); }

    /// Adds a line to the table: where each image is after a step. Throws DemoFailure when the exam, its images or
    /// their files say anything else.
    void note(const std::string& step);
    void printTable() const;

private:
    [[nodiscard]] char place(int position) const;
    void compareOrder() const;

    const dcmExam& m_exam;
    std::vector<int> m_expected;
    std::vector<std::string> m_lines;
};

}  // namespace qvr
