#pragma once

#include <QString>
#include <QStringList>
#include <functional>

class QWidget;

namespace orvo::shell {

// The screens the menu can open, by their form name (the `Forma` of a menu node, which is also the
// screen's objectName: "frmColores", "frmFacturacion"). Each area registers its screens in its
// own register function; src/app/screens.cpp calls them all at start.
class ScreenRegistry {
public:
    using Factory = std::function<QWidget*(QWidget* parent)>;

    static ScreenRegistry& instance();

    void add(const QString& formName, Factory factory);
    bool contains(const QString& formName) const;
    // A new screen, or nullptr when no screen has that name.
    QWidget* create(const QString& formName, QWidget* parent) const;
    QStringList names() const;

private:
    QList<QPair<QString, Factory>> m_factories;
};

} // namespace orvo::shell
