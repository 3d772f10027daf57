// Everything that can be wrong with a command: the exit code, one sentence, and nothing written.
#pragma once

#include <dcmtk/dcmdata/dcdatset.h>
#include <dcmtk/dcmdata/dcdeftag.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "dicomMaker.h"
#include "support/pictures.h"
#include "toolRun.h"

// All inputs, made once. Arguments name them with a leading '@'.
class Inputs {
public:
    Inputs() {
        DicomSpec colour;
        colour.photometric = "RGB";
        DicomSpec deep;
        deep.more = [](DcmDataset& set) { set.putAndInsertUint16(DCM_BitsAllocated, 32); };
        DicomSpec contradiction;
        contradiction.highBit = 5;
        DicomSpec badUid;
        badUid.uid = "1.2/../x";
        DicomSpec noPixels;
        noPixels.more = [](DcmDataset& set) { set.findAndDeleteElement(DCM_PixelData); };
        DicomSpec noRows;
        noRows.more = [](DcmDataset& set) { set.findAndDeleteElement(DCM_Rows); };
        DicomSpec tooFewPixels;
        tooFewPixels.more = [](DcmDataset& set) { set.putAndInsertUint16(DCM_Rows, 640); };
        DicomSpec huge;
        huge.more = [](DcmDataset& set) {
            set.putAndInsertUint16(DCM_Rows, 65535);
            set.putAndInsertUint16(DCM_Columns, 65535);
        };
        DicomSpec jpegLs;
        jpegLs.transfer = EXS_JPEGLSLossless;
        writeDicom(*this / "good.dcm", {});
        writeDicom(*this / "colour.dcm", colour);
        writeDicom(*this / "deep.dcm", deep);
        writeDicom(*this / "contradiction.dcm", contradiction);
        writeDicom(*this / "baduid.dcm", badUid);
        writeDicom(*this / "nopixels.dcm", noPixels);
        writeDicom(*this / "norows.dcm", noRows);
        writeDicom(*this / "toofew.dcm", tooFewPixels);
        writeDicom(*this / "huge.dcm", huge);
        writeDicom(*this / "control\nname.dcm", colour);
        cut(writeDicom(*this / "cut.dcm", {}), 4000);
        cut(writeDicom(*this / "cutheader.dcm", {}), 300);
        cut(writeDicom(*this / "cutls.dcm", jpegLs), 900);
        writeEncapsulated(*this / "j2k.dcm", {}, EXS_JPEG2000LosslessOnly);
        writeEncapsulated(*this / "brokenls.dcm", {}, EXS_JPEGLSLossless);
        m_folder.file("empty.dcm", std::string());
        m_folder.file("text.dcm", std::string("no image at all"));
        m_folder.file("short.raw", std::string(100, '\0'));
        m_folder.file("short.pgm", std::string("P5 100 100 65535\nabc"));
        m_folder.file("broken.pgm", std::string("P5 x 100 65535\nabc"));
        m_folder.file("huge.pgm", std::string("P5 999999999 999999999 65535\nabc"));
        m_folder.file("colour.ppm", std::string("P6 1 1 255\nabc"));
        m_folder.file("good.pgm", "P5 64 64 65535\n" + std::string(2 * 64 * 64, 'x'));
        m_folder.file("there.png", std::string("keep me"));
        m_folder.file("there.dcm", std::string("keep me"));
        m_folder.file(
            "onlyLatin.conf",
            std::string("<fontconfig><dir>/usr/share/fonts/truetype/liberation</dir></fontconfig>"));
        m_folder.file("noFont.conf", std::string("<fontconfig></fontconfig>"));
        std::filesystem::create_directory(*this / "folder");
        for (const char* name : {"dicoms", "exam", "broken", "nocache"})
            std::filesystem::create_directory(*this / name);
        writeDicom(*this / "dicoms/a.dcm", {});
        m_folder.file("exam/exam.json", std::string("{\"format\":\"qvr-exam\",\"version\":1,\"display\":"
                                                    "{\"width\":9,\"height\":9},\"studies\":[]}"));
        m_folder.file("broken/exam.json", std::string("{\"format\":\"qvr-exam\""));
        std::filesystem::create_directory(*this / "folder.png");
        std::filesystem::copy_file(*this / "good.dcm", *this / "source.png");
    }
    std::string operator/(const std::string& name) const { return m_folder / name; }
    std::string withPath(const std::string& text) const {
        return text.starts_with('@') ? *this / text.substr(1) : text;
    }
    // Every name with its content.
    std::map<std::string, std::string> content() const {
        std::map<std::string, std::string> all;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_folder.path()))
            all[entry.path().string()] = entry.is_directory() ? "folder" : contentOf(entry.path().string());
        return all;
    }

private:
    TemporaryFolder m_folder;
};

inline const Inputs& inputs() {
    static const Inputs all;
    return all;
}

// One sentence: it begins with the program's name, and further lines are its indented advice.
inline int sentences(const std::string& text) {
    int count = 0;
    for (std::size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) {
        if (text.compare(at, 5, "qvr: ") == 0)
            ++count;
        else if (text.compare(at, 5, "     ") != 0)
            return -1;
        if (text.find('\n', at) == std::string::npos) return -1;
    }
    return count;
}

struct BadCase {
    const char* name;
    std::vector<std::string> arguments;
    int code;
    std::string says;
    ToolSetting setting = {};
};

inline void PrintTo(const BadCase& test, std::ostream* out) {
    *out << test.name;
}

class BadInputTest : public testing::TestWithParam<BadCase> {};

inline std::vector<std::string> render(const std::string& file, std::vector<std::string> more = {}) {
    std::vector<std::string> arguments = {"render", file, "-o", "@out.png"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}
