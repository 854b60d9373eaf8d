#include "exchange/export/export_fixture.h"

#include "common/db/sql.h"
#include "exchange/export/closing_export.h"
#include "exchange/export/export_store.h"
#include "exchange/mail/mail_job.h"
#include "exchange/package/zip_archive.h"
#include "shell/startup/user_settings.h"
#include "support/smtp_test_server.h"

#include <QFile>
#include <QSysInfo>

namespace orvo::test {
namespace {

using exchange::mail::MailOptions;

inline void PrintTo(const QString& s, std::ostream* os) {
    *os << '"' << s.toStdString() << '"';
}

QByteArray readFile(const QString& path) {
    QFile f(path);
    f.open(QIODevice::ReadOnly);
    return f.readAll();
}

class MailTest : public ExportTest {
protected:
    void SetUp() override {
        ExportTest::SetUp();
        QDir().mkpath(envia());
    }
    // The account of the store: user tienda01 at orvo.test on the test server.
    void account(int port, const char* password = "s3creta") const {
        exec("INSERT INTO CUENTAS_MAIL (Nombre, SrvSalida, PuertoSaliente, SrvEntrada, UsrMail, "
             "SrvDominio, PswMail, EMailDest) VALUES ('TIENDA 01', '127.0.0.1', ?, '', "
             "'tienda01', 'orvo.test', ?, 'casamatriz@orvo.test')",
             {port, QString::fromLatin1(password)});
    }
    void message(const QString& subject, const QString& attachment) const {
        exec("INSERT INTO MENSAJES (Asunto, Anexo) VALUES (?, ?)", {subject, attachment});
    }
    QString package(const char* name = "01.zip") const {
        const QString path = envia() + "/" + name;
        QFile f(path);
        f.open(QIODevice::WriteOnly);
        f.write(QByteArray("PK paquete ") + name);
        return path;
    }
    struct Run {
        bool sent = false;
        QStringList lines;
    };
    Run mail(const MailOptions& options = {}) const {
        Run r;
        r.sent =
            exchange::mail::mailNow(db(), options, [&r](const QString& line) { r.lines << line; });
        return r;
    }
    SmtpTestServer::Options server{"tienda01", "s3creta", "FALLA"};
};

// A refused message does not stop the next one; the last one's success deletes the packages.
TEST_F(MailTest, FailedFirstMessageThenSentOne) {
    SmtpTestServer smtp(server);
    ASSERT_TRUE(smtp.isRunning()) << smtp.error().toStdString();
    account(smtp.port());
    message("FALLA primer envío", "01.zip");
    message("Información de la tienda 01", " 01.zip ");
    const QString zip = package();
    const QByteArray zipBytes = readFile(zip);

    const Run r = mail();
    EXPECT_TRUE(r.sent);
    ASSERT_EQ(r.lines.size(), 7) << r.lines.join('\n').toStdString();
    EXPECT_EQ(r.lines[0], QStringLiteral("Conectando a 127.0.0.1..."));
    EXPECT_EQ(r.lines[1], QStringLiteral("Enviando mensaje a TIENDA 01..."));
    EXPECT_TRUE(r.lines[2].startsWith(QStringLiteral("El envio del correo a fallado: ")));
    EXPECT_EQ(r.lines[3], QStringLiteral("Error de envío #1: FALLA primer envío"));
    EXPECT_EQ(r.lines[4], QStringLiteral("Enviando mensaje a TIENDA 01..."));
    EXPECT_EQ(r.lines[5], QStringLiteral("Mensaje(s) enviado(s) con éxito."));
    EXPECT_EQ(r.lines[6], QStringLiteral("Proceso finalizado."));
    EXPECT_FALSE(QFile::exists(zip)) << "sent: the package goes";
    EXPECT_EQ(QString::fromUtf8(readFile(home() + "/Enviar.log")),
              r.lines.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n"));
    EXPECT_EQ(shell::settings::readIn("Info", "Status"), QStringLiteral("1"));

    const auto got = smtp.received();
    ASSERT_EQ(got.size(), 1);
    EXPECT_EQ(got[0].from, QStringLiteral("tienda01@orvo.test"));
    EXPECT_EQ(got[0].to, QStringList{"casamatriz@orvo.test"});
    EXPECT_EQ(got[0].login, QStringLiteral("tienda01"));
    EXPECT_EQ(got[0].subject, QStringLiteral("Información de la tienda 01"));
    EXPECT_TRUE(got[0].headerFrom.contains(QStringLiteral("TIENDA 01")));
    EXPECT_EQ(got[0].attachments, QStringList{"01.zip"});
    EXPECT_EQ(readFile(got[0].attachmentFiles.value(0)), zipBytes);
}

// As it always has: the flag is the last message's, so a failed last message keeps the packages
// and says there was nothing to send, even though the first one went out.
TEST_F(MailTest, FailedLastMessageKeepsThePackages) {
    SmtpTestServer smtp(server);
    ASSERT_TRUE(smtp.isRunning()) << smtp.error().toStdString();
    account(smtp.port());
    message("Información de la tienda 01", "01.zip");
    message("FALLA segundo", "01.zip");
    const QString zip = package();
    const Run r = mail();
    EXPECT_FALSE(r.sent);
    EXPECT_EQ(r.lines.value(r.lines.size() - 2),
              QStringLiteral("No existen mensajes para enviar."));
    EXPECT_TRUE(r.lines.contains(QStringLiteral("Error de envío #2: FALLA segundo")));
    EXPECT_FALSE(
        r.lines.contains(QStringLiteral("Error de envío #1: Información de la tienda 01")));
    EXPECT_TRUE(QFile::exists(zip));
    EXPECT_EQ(smtp.received().size(), 1);
    EXPECT_EQ(shell::settings::readIn("Info", "Status"), QStringLiteral("0"));
}

TEST_F(MailTest, NothingToSendKeepsThePackagesAndAnEmptyAttachmentSendsNone) {
    SmtpTestServer smtp(server);
    ASSERT_TRUE(smtp.isRunning()) << smtp.error().toStdString();
    account(smtp.port());
    const QString zip = package();
    Run r = mail();
    EXPECT_FALSE(r.sent);
    EXPECT_EQ(r.lines, (QStringList{"Conectando a 127.0.0.1...", "No existen mensajes para enviar.",
                                    "Proceso finalizado."}));
    EXPECT_TRUE(QFile::exists(zip));

    message("Aviso sin anexo", "");
    r = mail();
    EXPECT_TRUE(r.sent);
    ASSERT_EQ(smtp.received().size(), 1);
    EXPECT_EQ(smtp.received()[0].attachments, QStringList());
    EXPECT_EQ(smtp.received()[0].body, QStringLiteral("Aviso sin anexo"));
}

// What the server refuses, what is not there and a server that does not answer are failures of
// the message, told in the log; the packages stay.
TEST_F(MailTest, RefusedLoginMissingAttachmentAndSilentServerFail) {
    SmtpTestServer smtp(server);
    ASSERT_TRUE(smtp.isRunning()) << smtp.error().toStdString();
    account(smtp.port(), "equivocada");
    message("Información", "01.zip");
    const QString zip = package();
    Run r = mail();
    EXPECT_FALSE(r.sent);
    EXPECT_TRUE(r.lines.value(2).startsWith(QStringLiteral("El envio del correo a fallado: ")));
    EXPECT_TRUE(QFile::exists(zip));

    exec("UPDATE CUENTAS_MAIL SET PswMail = 's3creta'");
    exec("UPDATE MENSAJES SET Anexo = '02.zip'");
    r = mail();
    EXPECT_FALSE(r.sent);
    EXPECT_TRUE(r.lines.value(2).contains(QStringLiteral("02.zip")))
        << r.lines.value(2).toStdString();

    int silentPort = 0;
    {
        SmtpTestServer gone;
        silentPort = gone.port();
    }
    exec("UPDATE MENSAJES SET Anexo = '01.zip'");
    exec("UPDATE CUENTAS_MAIL SET PuertoSaliente = ?", {silentPort});
    r = mail();
    EXPECT_FALSE(r.sent);
    EXPECT_TRUE(r.lines.value(2).startsWith(QStringLiteral("El envio del correo a fallado: ")));
    EXPECT_TRUE(QFile::exists(zip));
    EXPECT_EQ(smtp.received().size(), 0);
}

// fmEnvioTraNet2: one fixed recipient for every message; a pattern attaches the timestamped XML
// package.
TEST_F(MailTest, FixedRecipientAndPatternAttachment) {
    SmtpTestServer smtp(server);
    ASSERT_TRUE(smtp.isRunning()) << smtp.error().toStdString();
    account(smtp.port());
    exec("INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) VALUES ('CorreoDestinoXML', "
         "'01', 'xml@casamatriz.test')");
    message("XML de la tienda", "01_XML_*.zip");
    package("01_XML_20240614_181500.zip");
    MailOptions options;
    options.fixedRecipient = exchange::mail::xmlRecipient(db());
    EXPECT_TRUE(mail(options).sent);
    ASSERT_EQ(smtp.received().size(), 1);
    EXPECT_EQ(smtp.received()[0].to, QStringList{"xml@casamatriz.test"});
    EXPECT_EQ(smtp.received()[0].attachments, QStringList{"01_XML_20240614_181500.zip"});
}

// The closing's choice of export and the overlap of its range.
TEST_F(MailTest, ClosingPlanFollowsTheSettingAndOverlapsTheLastExport) {
    using exchange::exporting::ExportFormat;
    using exchange::exporting::exportRunsFor;
    EXPECT_EQ(exportRunsFor("Orvo"), QList<ExportFormat>{ExportFormat::Orvo});
    EXPECT_EQ(exportRunsFor("Vandu"), QList<ExportFormat>{ExportFormat::Vandu});
    EXPECT_EQ(exportRunsFor("XML"), QList<ExportFormat>{ExportFormat::Xml});
    EXPECT_EQ(exportRunsFor("XML-Vandu"),
              (QList<ExportFormat>{ExportFormat::Vandu, ExportFormat::Xml}));
    EXPECT_TRUE(exportRunsFor("").isEmpty());
    EXPECT_TRUE(exportRunsFor("Ninguno").isEmpty());

    const QDate day(2024, 6, 14);
    using exchange::exporting::closingExportPlan;
    EXPECT_TRUE(closingExportPlan(db(), day, "caja1").runs.isEmpty());
    exec("UPDATE PARAMETROS SET ComportamientoExportar = 'Orvo'");
    auto plan = closingExportPlan(db(), day, "caja1");
    EXPECT_EQ(plan.from, day) << "never exported: the day alone";
    EXPECT_EQ(plan.to, day);
    exec("UPDATE PARAMETROS SET UltExportacion = ?", {QDateTime(day.addDays(-1), QTime(0, 0))});
    EXPECT_EQ(closingExportPlan(db(), day, "caja1").from, day.addDays(-3));
    exec("INSERT INTO TABLA_VALORES (IdTabla, Codigo, Descripcion) VALUES ('LetraExportacion', "
         "'01', 'c')");
    EXPECT_EQ(closingExportPlan(db(), day, "Caja1").from, day.addDays(-6))
        << "this machine's name starts with the letter: five days";
    EXPECT_EQ(closingExportPlan(db(), day, "TIENDA").from, day.addDays(-3));
}

// Headless closing: the package of the overlapped range is built and mailed, and the last
// export moves to the closed day only once the mail went out.
TEST_F(MailTest, ClosingExportsMailsAndAdvancesTheLastExport) {
    SmtpTestServer smtp(server);
    ASSERT_TRUE(smtp.isRunning()) << smtp.error().toStdString();
    const QDate day = QDate::currentDate();
    exec("UPDATE PARAMETROS SET ComportamientoExportar = 'Orvo', UltExportacion = ?",
         {QDateTime(day.addDays(-1), QTime(0, 0))});
    account(smtp.port());
    message("FALLA hoy", "01.zip");
    sell(7, QDateTime(day.addDays(-2), QTime(15, 0)), "7591234000018", "1", "10");
    sell(8, QDateTime(day, QTime(9, 30)), "7591234000025", "1", "20");

    exchange::exporting::exportAfterClosing(db(), day);
    EXPECT_TRUE(smtp.received().isEmpty());
    EXPECT_EQ(exchange::exporting::lastExportDay(db()), day.addDays(-1))
        << "not mailed: the next closing starts from the same day";
    EXPECT_TRUE(QFile::exists(envia() + "/01.zip"));

    exec("UPDATE MENSAJES SET Asunto = 'Cierre de la tienda 01'");
    exchange::exporting::exportAfterClosing(db(), day);
    const auto got = smtp.received();
    ASSERT_EQ(got.size(), 1);
    EXPECT_EQ(got[0].attachments, QStringList{"01.zip"});
    EXPECT_EQ(exchange::exporting::lastExportDay(db()), day);
    EXPECT_FALSE(QFile::exists(envia() + "/01.zip"));
    // What head office receives: both days of the overlap.
    const exchange::package::PackageReader p(got[0].attachmentFiles[0], {{"VENTAS", {"NumFac"}}});
    const auto& ventas = p.table("VENTAS");
    ASSERT_EQ(ventas.recordCount(), 2);
    EXPECT_EQ(ventas.integer(0, "NumFac") + ventas.integer(1, "NumFac"), 15);
}

} // namespace
} // namespace orvo::test
