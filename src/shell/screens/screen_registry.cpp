#include "shell/screens/screen_registry.h"

#include <QWidget>

namespace orvo::shell {

ScreenRegistry& ScreenRegistry::instance() {
    static ScreenRegistry registry;
    return registry;
}

void ScreenRegistry::add(const QString& formName, Factory factory) {
    for (auto& entry : m_factories) {
        if (entry.first.compare(formName, Qt::CaseInsensitive) == 0) {
            entry.second = std::move(factory);
            return;
        }
    }
    m_factories.append({formName, std::move(factory)});
}

bool ScreenRegistry::contains(const QString& formName) const {
    for (const auto& entry : m_factories)
        if (entry.first.compare(formName, Qt::CaseInsensitive) == 0)
            return true;
    return false;
}

QWidget* ScreenRegistry::create(const QString& formName, QWidget* parent) const {
    for (const auto& entry : m_factories) {
        if (entry.first.compare(formName, Qt::CaseInsensitive) == 0) {
            QWidget* w = entry.second(parent);
            if (w && w->objectName().isEmpty())
                w->setObjectName(entry.first);
            return w;
        }
    }
    return nullptr;
}

QStringList ScreenRegistry::names() const {
    QStringList out;
    for (const auto& entry : m_factories)
        out << entry.first;
    return out;
}

} // namespace orvo::shell
