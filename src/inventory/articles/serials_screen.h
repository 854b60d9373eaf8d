#pragma once

#include "inventory/articles/serials.h"

#include <QSqlDatabase>
#include <QWidget>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;

namespace orvo::inventory {

// frmEntradaSeriales: the serials of the units of one stock document, approved into CODIGOSERIAL.
class SerialsScreen : public QWidget {
    Q_OBJECT
public:
    SerialsScreen(QSqlDatabase db, QString userCode, QWidget* parent = nullptr);

    // Steps of the screen, as its buttons and fields run them.
    void chooseType(const QString& code);
    void loadDocuments();
    void chooseDocument(int row);
    void scanSerial();
    void saveDocument();
    void newDocument();
    void openDocument(int number);

private:
    void showLines();
    void setReadOnly(bool readOnly);

    QSqlDatabase m_db;
    QString m_userCode;
    serials::SerialDocument m_doc;
    QList<serials::SourceDocument> m_sources;

    QComboBox* m_type = nullptr;
    QTableWidget* m_documents = nullptr;
    QLineEdit* m_document = nullptr;
    QLineEdit* m_party = nullptr;
    QLineEdit* m_note = nullptr;
    QTableWidget* m_sourceLines = nullptr;
    QLineEdit* m_barcode = nullptr;
    QLineEdit* m_serial = nullptr;
    QTableWidget* m_serials = nullptr;
    QLabel* m_state = nullptr;
    QPushButton* m_save = nullptr;
};

} // namespace orvo::inventory
