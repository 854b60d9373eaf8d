#pragma once

#include "common/dialogs/dialogs.h"

namespace orvo {

class QtDialogs : public Dialogs {
public:
    void information(QWidget* parent, const QString& text, const QString& title) override;
    void warning(QWidget* parent, const QString& text, const QString& title) override;
    void databaseError(QWidget* parent, const DbError& error) override;
    bool question(QWidget* parent, const QString& text, const QString& title,
                  bool defaultYes) override;
    std::optional<Credentials> authorisation(QWidget* parent, const QString& prompt,
                                             const QString& formName) override;
    std::optional<QString> textInput(QWidget* parent, const QString& title, const QString& label,
                                     const QString& text, bool password) override;
    QString openFileName(QWidget* parent, const QString& caption, const QString& dir,
                         const QString& filter) override;
    QString saveFileName(QWidget* parent, const QString& caption, const QString& dir,
                         const QString& filter) override;
    bool choosePrinter(QWidget* parent, QPrinter& printer) override;
};

} // namespace orvo
