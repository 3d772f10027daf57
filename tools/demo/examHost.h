// examHost: a small console: one exam with one study, a window to show it in, and a folder for its files.
//
// Series have the position of their sample. Every operation checks what it did and throws DemoFailure otherwise.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "qvr/qvr.h"
#include "tools/demo/contactSheet.h"
#include "tools/demo/residency.h"
#include "tools/demo/sample.h"
#include "tools/demo/screen.h"
#include "tools/qvr/examFile.h"

namespace qvr {

/// Size of the examination's window; large enough that most images have a preview.
inline constexpr CSize kExamWindow{1200, 1000};

class ExamHost {
public:
    /// @param folder  for all files; made when it is missing
    /// @param sheet   gets every picture that is kept; must outlive the host, as must the samples
    ExamHost(std::filesystem::path folder, const std::vector<Sample>& samples, ContactSheet& sheet);

    /// Worklist entry, study, and a series with its protocol for each sample.
    void plan();
    /// One exposure: makes room, creates the image and checks its raw copy and its small pictures.
    void acquire(int position);
    /// A stored image; makes room first.
    void open(int position, const QVR_ST_IMAGE& record);
    /// Brings an image into memory; when the memory is full, the exam writes out the oldest.
    void activate(int position);
    /// Writes the oldest images out while the memory is full, so that the exam never chooses one itself.
    void makeRoom();
    /// Writes an image out.
    void writeOut(int position);
    /// Rejects an image; the files are gone and the protocol's bitmap is back.
    void reject(int position);

    /// Draws an image as it is displayed now. @return the frame buffer, valid until the next picture
    const std::vector<std::uint32_t>& show(int position);
    /// Saves what the window shows as NAME.png, adds it to the sheet and tells the result.
    void keep(const std::string& name, const std::string& result);

    [[nodiscard]] int count() const { return static_cast<int>(m_samples.size()); }
    [[nodiscard]] const Sample& sample(int position) const {
        return m_samples[static_cast<std::size_t>(position)];
    }
    [[nodiscard]] dcmExam& exam() { return m_exam; }
    [[nodiscard]] dcmSeries& series(int position);
    [[nodiscard]] rawImage& raw(int position);
    [[nodiscard]] Screen& screen() { return m_screen; }
    [[nodiscard]] CDC* surface() { return &m_screen.surface(); }
    [[nodiscard]] const RECT* window() const { return &m_window; }
    [[nodiscard]] Residency& residency() { return m_residency; }
    [[nodiscard]] const std::filesystem::path& folder() const { return m_folder; }

private:
    void planSeries(int position);
    [[nodiscard]] std::filesystem::path pictogram(int position) const;
    [[nodiscard]] std::string uid(int position) const;
    void checkRawCopy(int position);
    void checkPictures(int position);
    void checkProtocolShown(int position);
    void writeBook(int position, const QVR_ST_IMAGE& record);
    void strikeFromBook(int position);

    std::filesystem::path m_folder;
    const std::vector<Sample>& m_samples;
    ContactSheet& m_sheet;
    dcmExam m_exam;
    Residency m_residency;
    tool::ExamRecord m_book;  // what the folder's exam file says
    Screen m_screen;
    RECT m_window;
};

}  // namespace qvr
