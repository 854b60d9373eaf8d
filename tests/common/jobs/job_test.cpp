#include "common/db/sql.h"
#include "common/db/transaction.h"
#include "common/errors/errors.h"
#include "common/jobs/job.h"
#include "support/test_db.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QThread>

namespace orvo::jobs {
namespace {

// Writes `rows` withdrawals one by one on its own connection, reporting each.
class FillJob : public Job {
public:
    FillJob(const QSqlDatabase& db, int rows, bool failHalfway = false)
        : Job(db), m_rows(rows), m_failHalfway(failHalfway) {}
    Qt::HANDLE workerThread = nullptr;
    QString workerConnection;

protected:
    void run(const QSqlDatabase& db) override {
        workerThread = QThread::currentThreadId();
        workerConnection = db.connectionName();
        db::Transaction tx(db);
        for (int i = 1; i <= m_rows; ++i) {
            if (isCancelled())
                throw UserError(QStringLiteral("Proceso cancelado"));
            if (m_failHalfway && i == m_rows / 2)
                throw UserError(QStringLiteral("Fallo a mitad"));
            db::execute(db,
                        QStringLiteral("INSERT INTO SALIDASCAJA (Serie, Numero, Descripcion, "
                                       "Monto, Status) VALUES ('J1', ?, 'job', 1, 0)"),
                        {i});
            report(i * 100 / m_rows, QStringLiteral("Escribiendo"));
        }
        tx.commit();
    }

private:
    int m_rows;
    bool m_failHalfway;
};

class JobTest : public test::DbTest {};

TEST_F(JobTest, WorksOnItsOwnThreadAndConnectionAndReportsSparingly) {
    FillJob job(db(), 300);
    QSignalSpy progress(&job, &Job::progress);
    QSignalSpy finished(&job, &Job::finished);
    job.start();
    ASSERT_TRUE(job.wait(60000));
    QCoreApplication::processEvents();

    EXPECT_TRUE(job.succeeded()) << job.error().toStdString();
    EXPECT_NE(job.workerThread, QThread::currentThreadId());
    EXPECT_NE(job.workerConnection, db().connectionName());
    EXPECT_FALSE(QSqlDatabase::contains(job.workerConnection)) << "the job's connection is left";
    EXPECT_EQ(count(QStringLiteral("SALIDASCAJA"), QStringLiteral("Serie = 'J1'")), 300);
    // 300 steps in well under a second: the first and the last are reported, not every one.
    ASSERT_GE(progress.size(), 2);
    EXPECT_LT(progress.size(), 300);
    EXPECT_EQ(progress.last().at(0).toInt(), 100);
    ASSERT_EQ(finished.size(), 1);
    EXPECT_TRUE(finished.first().at(0).toBool());
}

TEST_F(JobTest, FailureRollsBackAndCarriesTheMessage) {
    FillJob job(db(), 10, true);
    QSignalSpy finished(&job, &Job::finished);
    job.start();
    ASSERT_TRUE(job.wait(60000));
    EXPECT_FALSE(job.succeeded());
    EXPECT_EQ(job.error(), QStringLiteral("Fallo a mitad"));
    ASSERT_EQ(finished.size(), 1);
    EXPECT_FALSE(finished.first().at(0).toBool());
    EXPECT_EQ(finished.first().at(1).toString(), QStringLiteral("Fallo a mitad"));
    EXPECT_EQ(count(QStringLiteral("SALIDASCAJA"), QStringLiteral("Serie = 'J1'")), 0);
}

TEST_F(JobTest, CancelStopsAtTheNextSafePoint) {
    FillJob job(db(), 1000000);
    QSignalSpy progress(&job, &Job::progress);
    job.start();
    // Cancelled once it is writing.
    ASSERT_TRUE(progress.wait(60000));
    job.cancel();
    ASSERT_TRUE(job.wait(60000));
    EXPECT_FALSE(job.succeeded());
    EXPECT_EQ(job.error(), QStringLiteral("Proceso cancelado"));
    EXPECT_EQ(count(QStringLiteral("SALIDASCAJA"), QStringLiteral("Serie = 'J1'")), 0);
}

} // namespace
} // namespace orvo::jobs
