// qvr doctor: is this machine fit for the tool.
#include <fmt/format.h>

#include "../doctor.h"
#include "../verb.h"

namespace qvr::tool {

namespace {

const char* wordFor(Finding::Grade grade) {
    switch (grade) {
        case Finding::Grade::ok:
            return "ok";
        case Finding::Grade::warning:
            return "warning";
        case Finding::Grade::problem:
            break;
    }
    return "problem";
}

class Doctor : public Verb {
public:
    void declare(CLI::App& app) override {
        app.add_option("DIR", m_folder, "folder that will be written into (default: the present one)");
    }

    Exit run(const Common& common, Console& console) override {
        std::vector<Finding> findings;
        for (auto part : {examineFonts(), examineDicom(), examineFolder(m_folder)})
            findings.insert(findings.end(), part.begin(), part.end());
        bool problem = false;
        auto list = nlohmann::ordered_json::array();
        for (const auto& finding : findings) {
            problem = problem || finding.grade == Finding::Grade::problem;
            list.push_back({{"topic", finding.topic},
                            {"grade", wordFor(finding.grade)},
                            {"found", finding.found},
                            {"advice", finding.advice}});
            if (common.json) continue;
            console.result(fmt::format("{:<8} {:<30} {}\n", wordFor(finding.grade), finding.topic,
                                       printable(finding.found)));
            if (!finding.advice.empty())
                console.result(fmt::format("{:<40}{}\n", "", printable(finding.advice)));
        }
        if (common.json)
            console.object({{"file", m_folder}, {"findings", list}, {"result", problem ? "failed" : "ok"}});
        return problem ? Exit::someFailed : Exit::done;
    }

private:
    std::string m_folder = ".";
};

const VerbEntry entry(100, "doctor", "fonts, DICOM dictionary and codecs, folder and free space",
                      makeVerb<Doctor>);

}  // namespace

}  // namespace qvr::tool
