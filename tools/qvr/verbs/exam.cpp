// qvr exam build, list, export: an examination on disk, as a console keeps it.
#include <fmt/format.h>

#include "../examVerbs.h"
#include "../verb.h"

namespace qvr::tool {

namespace {

class Exam : public Verb {
public:
    void declare(CLI::App& app) override {
        app.require_subcommand(1);
        declareBuild(app);
        declareList(app);
        declareExport(app);
        for (auto* action : {m_buildApp, m_listApp, m_exportApp})
            action->set_help_flag("-h,--help", "print this help and exit");
    }

    Exit run(const Common& common, Console& console) override {
        if (m_buildApp->parsed()) {
            m_window.check();
            // Such a window could not be exported as DICOM.
            if (m_window.request().kind == WindowRequest::Kind::given && m_window.request().width < 0)
                notUnderstood("--window",
                              fmt::format("{},{}", m_window.request().center, m_window.request().width),
                              "Give a width of at least 1.");
            if (!m_curve.empty()) {
                const auto curve = parseCurve(m_curve);
                if (!curve)
                    notUnderstood("--curve", m_curve,
                                  "Give linear, power, exp, log or sigmoid, alone or with :K,C.");
                m_build.curve = *curve;
            }
            return buildExam(m_build, m_window, common, console);
        }
        if (m_listApp->parsed()) return listExam(m_listed, common, console);
        return exportExam(m_export, common, console);
    }

private:
    void declareBuild(CLI::App& app) {
        m_buildApp = app.add_subcommand("build", "an exam folder from the DICOM files of a folder");
        m_buildApp->add_option("DIR", m_build.source, "folder of DICOM files, with the folders in it")
            ->required();
        m_buildApp
            ->add_option("-o,--output", m_build.exam,
                         "exam folder to make; one that holds an exam is replaced only with --force")
            ->required()
            ->type_name("EXAM");
        m_window.declare(*m_buildApp, true);
        m_buildApp
            ->add_option("--curve", m_curve,
                         "linear (default), power, exp, log or sigmoid, each alone or with :K,C")
            ->type_name("CURVE");
        m_buildApp->add_flag("--new-uid", m_build.newUid,
                             "a new SOP Instance UID for images whose own is missing, cannot name a file or "
                             "occurs twice");
    }
    void declareList(CLI::App& app) {
        m_listApp = app.add_subcommand("list", "one line per series of an exam folder");
        m_listApp->add_option("EXAM", m_listed, "exam folder")->required();
    }
    void declareExport(CLI::App& app) {
        m_exportApp = app.add_subcommand("export", "one file per image, named after its UID");
        m_exportApp->add_option("EXAM", m_export.exam, "exam folder")->required();
        m_exportApp->add_option("-o,--output", m_export.folder, "folder to write into; it is made if missing")
            ->required()
            ->type_name("DIR");
        std::vector<std::string> names;
        std::string help;
        for (const auto& [name, what] : exportFormats()) {
            help += fmt::format("{}{}: {}", names.empty() ? "" : "; ", name, what);
            names.push_back(name);
        }
        m_export.format = names.front();
        m_exportApp->add_option("--format", m_export.format, help)
            ->type_name("FORMAT")
            ->check(CLI::IsMember(names).description(""));
    }

    CLI::App* m_buildApp = nullptr;
    CLI::App* m_listApp = nullptr;
    CLI::App* m_exportApp = nullptr;
    BuildRequest m_build;
    WindowOptions m_window;
    std::string m_curve;
    std::string m_listed;
    ExportRequest m_export;
};

const VerbEntry entry(80, "exam", "build, list or export an exam folder", makeVerb<Exam>);

}  // namespace

}  // namespace qvr::tool
