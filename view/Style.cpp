#include "view/Style.h"

#include <QApplication>
#include <QPalette>
#include <QStyleFactory>

namespace view {

namespace {

struct Theme {
    QColor window, base, button, text, faint, accent, onAccent;
};

const Theme kDark = {{44, 44, 44},    {32, 32, 32},   {60, 60, 60},   {224, 224, 224},
                     {124, 124, 124}, {74, 134, 201}, {255, 255, 255}};
const Theme kLight = {{240, 240, 240}, {255, 255, 255}, {228, 228, 228}, {32, 32, 32},
                      {140, 140, 140}, {40, 104, 176},  {255, 255, 255}};

QPalette PaletteOf(const Theme& theme) {
    QPalette palette(theme.button, theme.window);
    const std::pair<QPalette::ColorRole, QColor> roles[] = {
        {QPalette::WindowText, theme.text},      {QPalette::Text, theme.text},
        {QPalette::ButtonText, theme.text},      {QPalette::Base, theme.base},
        {QPalette::AlternateBase, theme.window}, {QPalette::ToolTipBase, theme.base},
        {QPalette::ToolTipText, theme.text},     {QPalette::PlaceholderText, theme.faint},
        {QPalette::Highlight, theme.accent},     {QPalette::HighlightedText, theme.onAccent},
        {QPalette::Link, theme.accent}};
    for (const auto& [role, colour] : roles) palette.setColor(role, colour);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, theme.faint);
    return palette;
}

} // namespace

void UseTheme(bool dark) {
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    QApplication::setPalette(PaletteOf(dark ? kDark : kLight));
}

} // namespace view
