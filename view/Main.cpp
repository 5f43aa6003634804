#include "media/PlugIns.h"
#include "media/Settings.h"
#include "view/Style.h"
#include "view/Window.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QSettings>
#include <QStandardPaths>

#include <cstdio>

namespace {

struct Options {
    QString tool, settings, screenshot, size, theme;
    QStringList inputs, sets;
};

Options Parse(const QApplication& program) {
    QCommandLineParser line;
    line.setApplicationDescription("Shows what a tool makes of a clip, and lets its controls be moved.");
    line.addHelpOption();
    line.addVersionOption();
    line.addPositionalArgument("TOOL", "The tool to start with.", "[TOOL]");
    line.addOptions(
        {{{"i", "input"}, "[INPUT=]FILE at an input; the sample clip where none is given.", "FILE"},
         {{"s", "set"}, "CONTROL=VALUE, in the order given.", "SETTING"},
         {"settings", "Controls from a file that was saved.", "FILE"},
         {"screenshot", "Writes a picture of the window to FILE, and ends.", "FILE"},
         {"size", "Size of the window.", "WxH"},
         {"theme", "light or dark.", "THEME"}});
    line.process(program);
    return {line.positionalArguments().value(0),
            line.value("settings"),
            line.value("screenshot"),
            line.value("size"),
            line.value("theme"),
            line.values("input"),
            line.values("set")};
}

int Run(QApplication& program, const Options& options) {
    media::LoadPlugIns();
    const QSettings settings;
    view::UseTheme(options.theme.isEmpty() ? settings.value("dark", true).toBool() : options.theme == "dark");

    std::vector<std::string> links;
    for (const QString& input : options.inputs) links.push_back(input.toStdString());
    if (links.empty()) links.push_back("sample:");
    host::Registry& tool =
        options.tool.isEmpty() ? *media::Tools().at(0) : media::FindTool(options.tool.toStdString());
    view::Window window;
    if (const QStringList sides = options.size.split('x'); sides.size() == 2)
        window.resize(sides[0].toInt(), sides[1].toInt());
    window.show();
    if (!window.Open(tool, links) && !window.Open(tool, {"sample:"})) return 1;
    if (program.arguments().size() == 1) window.Recover();
    if (!options.settings.isEmpty()) window.LoadLook(options.settings);
    for (const QString& set : options.sets)
        media::ApplySetting(window.Work().CurrentLook()->Op(), set.toStdString());
    window.Work().CurrentLook()->Tell();
    if (!options.screenshot.isEmpty())
        QObject::connect(&window, &view::Window::Settled, &program, [&] {
            QTimer::singleShot(300, &program, [&] { // what was laid out anew is drawn by then
                const bool written = window.grab().save(options.screenshot);
                if (!written)
                    std::fprintf(stderr, "k7view: '%s' cannot be written\n", qPrintable(options.screenshot));
                std::exit(written ? 0 : 1);
            });
        });
    return QApplication::exec();
}

} // namespace

int main(int count, char** words) {
    view::AskForOpenGL();
    QApplication program(count, words);
    QApplication::setApplicationName("k7view");
    QApplication::setOrganizationName("k7");
    QApplication::setApplicationVersion(K7_VERSION);
    try {
        return Run(program, Parse(program));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "k7view: %s\n", error.what());
        return 2;
    }
}
