// Sequences of operations on an examination and on a standalone image. Whatever a host asks for in whatever order: the
// invariants hold, and an acquired image that was not rejected is still somewhere.
#include <qvr/qvr.h>

#include <memory>
#include <string>

#include "fuzz/bytes.h"
#include "fuzz/targets.h"
#include "tests/support/temporaryFolder.h"

namespace {

constexpr int kSeries = 7;

// Files of a run.
const std::string& folder() {
    static const TemporaryFolder one(TemporaryFolder::quickPlace());
    return one.path();
}

class Session {
public:
    explicit Session(fuzz::Bytes& bytes) : m_bytes(bytes), m_surface(40, 30) {
        const QVR_ST_STUDY study;
        m_exam.CreateStudy(&study, bytes.below(2) ? dcmStudy::CR : dcmStudy::DX);
        const QVR_ST_SERIES series;
        for (int i = 0; i < kSeries; ++i) m_exam.CreateSeries(0, &series);
    }

    void step() {
        const int position = m_bytes.below(kSeries);
        dcmSeries& series = *m_exam.GetStudy(0)->GetSeries(position);
        switch (m_bytes.below(16)) {
            case 0:
            case 1:
                return create(position);
            case 2:
                m_exam.ActivateImage(0, position, &m_rectangle, &m_surface);
                return;
            case 3:
                m_exam.WriteSeriesToHDD(&series);
                return;
            case 4:
                m_exam.ReadSeriesInRAM(&series, &m_rectangle, &m_surface);
                return;
            case 5:
                m_exam.RejectImage(0, position);
                return;
            case 6:
                m_rectangle = {m_bytes.below(20) - 5, m_bytes.below(20) - 5, m_bytes.below(60),
                               m_bytes.below(60)};
                m_exam.UpdateImageInRAM(&m_rectangle, &m_surface);
                return;
            default:
                return edit(series);
        }
    }

    // The class's own promises, whatever was called.
    void check() {
        for (int i = 0; i < kSeries; ++i) {
            dcmImage* const image = m_exam.GetStudy(0)->GetSeries(i)->GetDcmImage();
            const rawImage* const raw = image ? image->GetRawImage() : nullptr;
            if (!raw) continue;
            if ((raw->GetPixelData() != nullptr) != (raw->IsReadInRAM() != 0)) __builtin_trap();
            if (raw->GetDIB() && !raw->IsReadInRAM()) __builtin_trap();
            if (raw->GetMarkCount() > 3) __builtin_trap();
        }
    }

private:
    void create(int position) {
        const int width = m_bytes.below(48);
        const int height = m_bytes.below(48);
        const auto pixels = m_bytes.pixels(static_cast<std::size_t>(width * height));
        QVR_ST_IMAGE image;
        image.Width = width;
        image.Height = height;
        image.BitsStored = m_bytes.below(4) ? 14 : 10 + m_bytes.below(7);
        image.PixelData = pixels.data();
        image.SOPInstanceUID = std::to_string(position).c_str();
        image.WindowWidth = m_bytes.number();
        image.WindowCenter = m_bytes.number();
        m_exam.CreateImage(0, position, &image, folder().c_str(), &m_rectangle, &m_surface);
    }

    void edit(dcmSeries& series) {
        switch (m_bytes.below(12)) {
            case 0: {
                const int width = m_bytes.below(48);
                const int height = m_bytes.below(48);
                const auto pixels = m_bytes.pixels(static_cast<std::size_t>(width * height));
                series.UpdateImage(width, height, pixels.data(), 14, 13, m_bytes.number(), m_bytes.number(),
                                   &m_rectangle, &m_surface);
                return;
            }
            case 1:
                series.UpdateImage(m_bytes.number(), m_bytes.number(), &m_surface);
                return;
            case 2:
                series.UpdateImage(m_bytes.ratio(), m_bytes.ratio(), &m_rectangle, &m_surface);
                return;
            case 3:
                series.UpdateImage(m_bytes.number(), m_bytes.number(), &m_rectangle, &m_surface);
                return;
            case 4:
                series.UpdateImage(&m_surface);
                return;
            case 5:
                series.SetLUT(m_bytes.below(7) - 1, m_bytes.number(), m_bytes.number());
                return;
            case 6:
                series.SaveUndoData();
                return;
            case 7:
                series.ReadUndoData(&m_rectangle, &m_surface);
                return;
            default:
                if (dcmImage* const image = series.GetDcmImage())
                    if (rawImage* const raw = image->GetRawImage()) mark(*raw);
                return;
        }
    }

    void mark(rawImage& raw) {
        const int index = m_bytes.below(5) - 1;
        switch (m_bytes.below(9)) {
            case 0: {
                const std::uint8_t text[4] = {m_bytes.take<std::uint8_t>(), m_bytes.take<std::uint8_t>(),
                                              m_bytes.take<std::uint8_t>(), 0};
                raw.AddMark(reinterpret_cast<const char*>(text), &m_rectangle, &m_surface);
                return;
            }
            case 1:
                raw.InflateMark(index, &m_rectangle, &m_surface);
                return;
            case 2:
                raw.DeflateMark(index);
                return;
            case 3:
                raw.MoveMark(index, m_bytes.number(), m_bytes.number(), &m_rectangle, &m_surface);
                return;
            case 4:
                raw.SetMarkSelected(index);
                return;
            case 5:
                raw.DeleteMark(index);
                return;
            case 6:
                raw.PtInMarkRect({m_bytes.number(), m_bytes.number()}, &m_surface);
                return;
            case 7:
                raw.WriteFileForPRES((folder() + "/export.raw").c_str(), &m_surface);
                return;
            default:
                raw.Draw(&m_rectangle, &m_surface);
                return;
        }
    }

    fuzz::Bytes& m_bytes;
    CRasterDC m_surface;
    RECT m_rectangle{0, 0, 40, 30};
    dcmExam m_exam;
};

void standalone(fuzz::Bytes& bytes) {
    CRasterDC surface(40, 30);
    CQVRImage image;
    for (int i = 0; i < 12 && !bytes.empty(); ++i) {
        const int width = bytes.below(40);
        const int height = bytes.below(40);
        const auto pixels = bytes.pixels(static_cast<std::size_t>(width * height));
        image.Update(width, height, pixels.data(), 14, 13, bytes.number(), bytes.number());
        image.SetXRatio(bytes.ratio());
        image.SetYRatio(bytes.ratio());
        image.SetXOffset(bytes.number());
        image.SetYOffset(bytes.number());
        const RECT rectangle{bytes.below(20), bytes.below(20), bytes.below(90), bytes.below(90)};
        image.BuildDisplayImage(&rectangle, &surface, bytes.below(2));
        image.FreeDraw({bytes.number(), bytes.number()}, &rectangle, &surface);
        const CQVRImage copy(image);
        if (copy.GetPixelData() && copy.GetPixelData() == image.GetPixelData()) __builtin_trap();
    }
}

}  // namespace

namespace fuzz {

int sequence(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    if (bytes.below(4) == 0) {
        standalone(bytes);
        return 0;
    }
    Session session(bytes);
    for (int step = 0; step < 64 && !bytes.empty(); ++step) {
        session.step();
        session.check();
    }
    return 0;
}

}  // namespace fuzz
