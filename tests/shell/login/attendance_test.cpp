#include "shell/login/attendance.h"

#include "common/db/sql.h"
#include "support/test_db.h"

#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::shell;
using orvo::test::DbTest;
using Kind = AttendanceResult::Kind;

class AttendanceTest : public DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        exec(QStringLiteral("INSERT INTO TRABAJADORES (Cedula, Codigo, Nombre) VALUES (?, ?, ?)"),
             {QStringLiteral("V12345678"), QStringLiteral("001"), QStringLiteral("Ana Pérez")});
        exec(QStringLiteral("INSERT INTO TRABAJADORES (Cedula, Codigo, Nombre) VALUES (?, ?, ?)"),
             {QStringLiteral("V7654321"), QStringLiteral("002"), QStringLiteral("Luis Mora")});
    }
    AttendanceResult swipe(const QString& card, const QDateTime& at) {
        return recordAttendance(db(), card, at);
    }
    QDateTime exitOf(int numero) const {
        db::Sql q(db(), QStringLiteral("SELECT HoraSalida FROM CONTROLACCESO WHERE Numero = ?"));
        q.bindAll({numero}).exec();
        return q.next() ? q.dateTime(QStringLiteral("HoraSalida")) : QDateTime();
    }
    const QDateTime m_morning{QDate(2026, 11, 20), QTime(8, 0, 0)};
};

TEST_F(AttendanceTest, EntryRepeatExitAndNewEntryTheSameDay) {
    AttendanceResult r = swipe(QStringLiteral(" V12345678 "), m_morning);
    EXPECT_EQ(r.kind, Kind::Entry);
    EXPECT_EQ(r.name, QStringLiteral("Ana Pérez"));
    EXPECT_EQ(r.card, QStringLiteral("V12345678"));
    EXPECT_EQ(r.condition, QStringLiteral("SU ENTRADA FUE REGISTRADA"));
    EXPECT_EQ(count(QStringLiteral("CONTROLACCESO")), 1);

    // A second swipe within the minute is not the exit.
    r = swipe(QStringLiteral("V12345678"), m_morning.addSecs(59));
    EXPECT_EQ(r.kind, Kind::EntryRepeated);
    EXPECT_EQ(r.condition, QStringLiteral("SU ENTRADA FUE REGISTRADA"));
    EXPECT_FALSE(exitOf(1).isValid());

    r = swipe(QStringLiteral("V12345678"), m_morning.addSecs(60));
    EXPECT_EQ(r.kind, Kind::Exit);
    EXPECT_EQ(r.condition, QStringLiteral("SU SALIDA FUE REGISTRADA"));
    EXPECT_EQ(exitOf(1).time(), QTime(8, 1, 0));
    EXPECT_EQ(count(QStringLiteral("CONTROLACCESO")), 1);

    r = swipe(QStringLiteral("V12345678"), m_morning.addSecs(3600));
    EXPECT_EQ(r.kind, Kind::Entry);
    EXPECT_EQ(count(QStringLiteral("CONTROLACCESO")), 2);
    EXPECT_EQ(
        count(QStringLiteral("CONTROLACCESO"), QStringLiteral("Numero = 2 AND HoraSalida IS NULL")),
        1);

    // Another worker gets the next number; the next day starts with an entry again.
    EXPECT_EQ(swipe(QStringLiteral("V7654321"), m_morning.addSecs(3700)).kind, Kind::Entry);
    EXPECT_EQ(count(QStringLiteral("CONTROLACCESO"), QStringLiteral("Numero = 3")), 1);
    EXPECT_EQ(swipe(QStringLiteral("V7654321"), m_morning.addDays(1)).kind, Kind::Entry);
    EXPECT_EQ(count(QStringLiteral("CONTROLACCESO"), QStringLiteral("Cedula = 'V7654321'")), 2);
}

TEST_F(AttendanceTest, UnknownWorkerAndClockSetBackRecordNothing) {
    AttendanceResult r = swipe(QStringLiteral("V000"), m_morning);
    EXPECT_EQ(r.kind, Kind::UnknownWorker);
    EXPECT_EQ(r.condition, QStringLiteral("TRABAJADOR NO REGISTRADO"));
    EXPECT_EQ(count(QStringLiteral("CONTROLACCESO")), 0);

    ASSERT_EQ(swipe(QStringLiteral("V12345678"), m_morning).kind, Kind::Entry);
    ASSERT_EQ(swipe(QStringLiteral("V12345678"), m_morning.addSecs(4 * 3600)).kind, Kind::Exit);
    // The machine's clock now reads earlier than the last exit.
    r = swipe(QStringLiteral("V7654321"), m_morning.addSecs(3 * 3600));
    EXPECT_EQ(r.kind, Kind::InvalidDate);
    EXPECT_EQ(r.condition, QStringLiteral("FECHA NO VALIDA"));
    r = swipe(QStringLiteral("V12345678"), m_morning.addDays(-1));
    EXPECT_EQ(r.kind, Kind::InvalidDate);
    EXPECT_EQ(count(QStringLiteral("CONTROLACCESO")), 1);
}

TEST_F(AttendanceTest, CardTypingFollowsDejarEditar) {
    exec(QStringLiteral("INSERT INTO PARAMETROS (Nombre, DejarEditar) VALUES ('T', 2)"));
    EXPECT_FALSE(cardTypingAllowed(db()));
    exec(QStringLiteral("UPDATE PARAMETROS SET DejarEditar = 1"));
    EXPECT_TRUE(cardTypingAllowed(db()));
}
