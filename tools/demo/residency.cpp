// An image on disk counts as being there only when its file has the length of its pixels.
#include "tools/demo/residency.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>

#include "tools/demo/check.h"

namespace qvr {
namespace {

constexpr std::size_t kStepColumns = 46;

bool isWhole(const char* path, const rawImage& image) {
    std::error_code error;
    const auto bytes = std::filesystem::file_size(path, error);
    const auto pixels =
        static_cast<std::uintmax_t>(image.GetWidth()) * static_cast<std::uintmax_t>(image.GetHeight());
    return !error && bytes == 2 * pixels;
}

}  // namespace

void Residency::left(int position) {
    m_expected.erase(std::remove(m_expected.begin(), m_expected.end(), position), m_expected.end());
}

void Residency::note(const std::string& step) {
    compareOrder();
    std::string line = step;
    line.resize(kStepColumns, ' ');
    for (int i = 0; i < m_exam.GetStudy(0)->GetSeriesCount(); ++i) line += std::string{' ', place(i)};
    line += "  ";
    for (const int position : m_expected) line += ' ' + std::to_string(position + 1);
    m_lines.push_back(line);
}

void Residency::printTable() const {
    std::string heading = "M in memory, D on disk, - no image";
    heading.resize(kStepColumns, ' ');
    for (int i = 1; i <= m_exam.GetStudy(0)->GetSeriesCount(); ++i) heading += ' ' + std::to_string(i);
    std::printf("  %s   oldest to newest\n", heading.c_str());
    for (const std::string& line : m_lines) std::printf("  %s\n", line.c_str());
}

void Residency::compareOrder() const {
    require(m_exam.GetSeriesInRAMCount() == count(), "the exam counts " +
                                                         std::to_string(m_exam.GetSeriesInRAMCount()) +
                                                         " images in memory, not " + std::to_string(count()));
    for (int i = 0; i < count(); ++i) {
        const int position = m_expected[static_cast<std::size_t>(i)];
        require(m_exam.GetSeriesInRAM(i) == m_exam.GetStudy(0)->GetSeries(position),
                "entry " + std::to_string(i) + " of the exam's list is not series " +
                    std::to_string(position + 1));
    }
}

char Residency::place(int position) const {
    const dcmSeries& series = *m_exam.GetStudy(0)->GetSeries(position);
    const std::string name = "series " + std::to_string(position + 1);
    const bool expected = std::find(m_expected.begin(), m_expected.end(), position) != m_expected.end();
    require((series.IsImageInRAM() != 0) == expected,
            name + (expected ? " should be in memory and is not" : " is in memory and should not be"));
    if (!series.IsImageExist()) return '-';
    require(isWhole(series.GetImageBAKFilePath(), *series.GetDcmImage()->GetRawImage()),
            name + ": " + series.GetImageBAKFilePath() + " is missing or short");
    if (expected) return 'M';
    require(isWhole(series.GetImageFilePath(), *series.GetDcmImage()->GetRawImage()),
            name + ": " + series.GetImageFilePath() + " is missing or short");
    return 'D';
}

}  // namespace qvr
