#pragma once

#include "exchange/package/package_reader.h"
#include "exchange/package/templates.h"
#include "support/test_db.h"

#include <QDateTime>
#include <QDir>
#include <QSettings>
#include <QTemporaryDir>

namespace orvo::test {

// A store "01" with one register, a user, a client with accents and three articles; ORVO_HOME
// and the user settings in a fresh folder, the templates installed as `orvo db init` does.
class ExportTest : public DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        m_oldHome = qgetenv("ORVO_HOME");
        qputenv("ORVO_HOME", m_home.path().toUtf8());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_home.path());
        exchange::package::installTemplates();
        exec("INSERT INTO PARAMETROS (Nombre, Codigo, ComportamientoExportar) VALUES "
             "('TIENDA ÑAÑA, C.A.', '01', '')");
        exec("INSERT INTO CAJAS (Serie, Numero, UltimaFactura, UltimaDevolucion) VALUES "
             "('Z1B0000001', 3, 0, 0)");
        exec("INSERT INTO USUARIOS (CodUsuario, NombreUsuario, Pasword, Status) VALUES "
             "('CAJ1', 'CAJERA UNO', 'x', 1)");
        exec("INSERT INTO CLIENTES (Codigo, Nombre, Status) VALUES ('V123', 'MARÍA PEÑA', 1), "
             "('V999', 'SIN COMPRAS', 1)");
        exec("INSERT INTO MARCAS (Codigo, Nombre, Status) VALUES ('001', 'ORVO', 1)");
        for (const char* code : {"7591234000018", "7591234000025", "7591234000032"})
            exec("INSERT INTO INVENTARIO (CodigoBarra, Nombre, Referencia, CodigoMarca, "
                 "PrecioDetal, Existencia, CostoPromedio, Tipo, Status) VALUES (?, ?, 'REF1', "
                 "'001', 100, 10, 40, 0, 1)",
                 {QString::fromLatin1(code), QStringLiteral("CAMISA NIÑO %1").arg(code)});
    }
    void TearDown() override {
        if (m_oldHome.isEmpty())
            qunsetenv("ORVO_HOME");
        else
            qputenv("ORVO_HOME", m_oldHome);
        DbTest::TearDown();
    }

    // A cash invoice of one line, and its payment.
    void sell(int number, const QDateTime& when, const QString& barcode, const char* quantity,
              const char* price, const QString& client = QStringLiteral("V123")) const {
        exec("INSERT INTO VENTAS (NumeroFactura, Serie, Fecha, Hora, Cliente, TipoVenta, "
             "FormaPago, TotalMercancia, TotalDescuento, TotalImpuesto, TotalCosto, Usuario, "
             "Status) VALUES (?, 'Z1B0000001', ?, ?, ?, 1, 'EFECTIVO', ?, 0, 0, 0, 'CAJ1', 1)",
             {number, when, when, client, QString::fromLatin1(price)});
        exec("INSERT INTO MOVVENTAS (NumeroFactura, Serie, Hora, TipoLista, CodigoBarra, Precio, "
             "PrecioLista, Costo, Impuesto, PorcentajeImpuesto, Cantidad, CantidadDevuelta, "
             "Item, PorcentajeDescuento) VALUES (?, 'Z1B0000001', ?, 'D', ?, ?, ?, 40.12345, 0, "
             "16, ?, 0, 1, 0)",
             {number, when, barcode, QString::fromLatin1(price), QString::fromLatin1(price),
              QString::fromLatin1(quantity)});
        exec("INSERT INTO PAGOSVENTA (NumeroFactura, Serie, Item, FormaPago, Fecha, Monto, "
             "Status) VALUES (?, 'Z1B0000001', 1, '1', ?, ?, 1)",
             {number, when, QString::fromLatin1(price)});
    }

    QString home() const { return m_home.path(); }
    QString envia() const { return m_home.filePath(QStringLiteral("Envia")); }
    QStringList enviaFiles() const { return QDir(envia()).entryList(QDir::Files, QDir::Name); }

    QTemporaryDir m_home;
    QByteArray m_oldHome;
};

} // namespace orvo::test
