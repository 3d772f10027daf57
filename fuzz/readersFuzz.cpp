// The tool's readers: exam file, PGM, raw sizes, DICOM with its adoption. A file that cannot be used is a Failure with a
// sentence; nothing else may come out of a reader.
#include <algorithm>
#include <span>
#include <string_view>

#include "adoption.h"
#include "errors.h"
#include "examFile.h"
#include "fuzz/targets.h"
#include "sourceReader.h"

namespace fuzz {

int readers(const std::uint8_t* data, std::size_t size) {
    static const bool ready = [] {
        qvr::tool::silenceDicomToolkit();
        qvr::tool::registerDecoders();
        return true;
    }();
    if (!ready || size < 1) return 0;
    const std::span<const std::uint8_t> bytes(data + 1, size - 1);
    try {
        switch (data[0] % 4) {
            case 0:
                (void)qvr::tool::parseExam("fuzz", bytes);
                break;
            case 1: {
                const auto image = qvr::tool::readPgm("fuzz", bytes);
                qvr::tool::adopt(image, qvr::tool::Adoption(image.format));
                break;
            }
            case 2:
                if (const auto spec =
                        qvr::tool::parseRawSpec(std::string_view(reinterpret_cast<const char*>(bytes.data()),
                                                                 std::min<std::size_t>(bytes.size(), 24))))
                    (void)qvr::tool::readRaw("fuzz", bytes, *spec);
                break;
            default: {
                const auto image = qvr::tool::readDicom("fuzz", bytes);
                qvr::tool::adopt(image, qvr::tool::Adoption(image.format));
                break;
            }
        }
    } catch (const qvr::tool::Failure&) {
        return 0;
    }
    return 0;
}

}  // namespace fuzz
