// The demo's catalogue: models (reference + brand) in sizes and colours, one INVENTARIO row per
// variant, each with its own EAN-13 barcode, stock, costs and prices.
#include "shell/demo/demo_parts.h"

#include "common/decimal/decimal.h"
#include "shell/setup/row_writer.h"

#include <cstdint>

namespace orvo::shell::demo::detail {

using setup::cost;
using setup::money;
using setup::RowWriter;

namespace {

// A small generator of our own with a fixed seed: the standard distributions differ between
// library versions, and the demo must be the same store everywhere.
class Dice {
public:
    explicit Dice(std::uint64_t seed) : m_state(seed) {}
    std::uint64_t next() {
        std::uint64_t z = (m_state += 0x9E3779B97F4A7C15ULL);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }
    // Uniform in [lo, hi].
    int between(int lo, int hi) { return lo + int(next() % std::uint64_t(hi - lo + 1)); }

private:
    std::uint64_t m_state;
};

struct Kind {
    const char* prefix; // reference prefix
    const char* name;
    const char* category;
    const char* maker;
    int tax; // IMPUESTOS code
    QStringList sizes;
    int costFrom; // unit cost range, whole bolívares
    int costTo;
};

const QStringList kTops = {"S", "M", "L", "XL"};
const QStringList kDresses = {"S", "M", "L"};
const QStringList kWaist = {"28", "30", "32", "34", "36"};
const QStringList kLadiesWaist = {"26", "28", "30", "32"};
const QStringList kKids = {"4", "6", "8", "10"};
const QStringList kShoes = {"38", "39", "40", "41", "42"};
const QStringList kSandals = {"36", "37", "38", "39"};
const QStringList kTwo = {"M", "L"};

const QList<Kind>& kinds() {
    static const QList<Kind> list = {
        {"BMC", "BLUSA MANGA CORTA", "010101", "001", 1, kTops, 180, 320},
        {"BSE", "BLUSA DE SEDA", "010101", "002", 1, kTops, 350, 600},
        {"PDS", "PANTALON DAMA STRETCH", "010102", "001", 1, kLadiesWaist, 400, 650},
        {"VCA", "VESTIDO CASUAL", "010103", "002", 1, kDresses, 450, 800},
        {"COX", "CAMISA OXFORD", "020101", "001", 1, kTops, 380, 620},
        {"CMC", "CAMISA MANGA CORTA", "020101", "002", 1, kTops, 250, 420},
        {"JEA", "PANTALON JEAN CLASICO", "020102", "002", 1, kWaist, 500, 900},
        {"BCA", "BERMUDA CARGO", "020102", "001", 1, kWaist, 300, 520},
        {"FCR", "FRANELA CUELLO REDONDO", "020103", "001", 1, kTops, 120, 220},
        {"FPO", "FRANELA POLO", "020103", "002", 1, kTops, 220, 380},
        {"CDN", "CONJUNTO DEPORTIVO NIÑO", "030101", "002", 2, kKids, 280, 450},
        {"ZDE", "ZAPATO DEPORTIVO", "040101", "003", 1, kShoes, 900, 1600},
        {"SPL", "SANDALIA PLAYERA", "040201", "003", 1, kSandals, 150, 300},
        {"GBO", "GORRA BORDADA", "050101", "004", 1, kTwo, 90, 180},
        {"CCU", "CORREA DE CUERO", "050102", "004", 1, kDresses, 160, 300},
        {"RAN", "RELOJ ANALOGO", "050103", "004", 3, kTwo, 1200, 2400},
        {"MED", "MEDIAS DEPORTIVAS PAQ. 3", "050104", "004", 2, kTwo, 60, 110},
        {"TAP", "TAPABOCAS LAVABLE", "050104", "004", 4, kDresses, 20, 45},
    };
    return list;
}

// Colours offered by the catalogue (codes of COLORES).
const QStringList kPalette = {"001", "002", "003", "004", "005", "006",
                              "007", "008", "009", "010", "011", "012"};

// Brand codes of MARCAS that make models ('0' is the placeholder brand of the services).
const QStringList kBrands = {"001", "002", "003", "004", "005", "006"};

// GS1 prefix 759 (Venezuela), company 1234, then the item number: 12 digits + check digit.
QString ean13(int item) {
    const QString body = QStringLiteral("7591234%1").arg(item, 5, 10, QLatin1Char('0'));
    int sum = 0;
    for (int i = 0; i < 12; ++i)
        sum += body[i].digitValue() * (i % 2 == 0 ? 1 : 3);
    return body + QString::number((10 - sum % 10) % 10);
}

Decimal percentOf(const Decimal& amount, int percent) {
    return amount * Decimal(percent) / Decimal(100);
}

struct Promotion {
    int active = 0;
    Decimal price;
    QVariant from;
    QVariant to;
};

} // namespace

void seedArticles(const QSqlDatabase& db, const QDate& today) {
    QHash<QString, QString> colourNames;
    {
        db::Sql q(db, QStringLiteral("SELECT Codigo, Nombre FROM COLORES"));
        q.exec();
        while (q.next())
            colourNames.insert(q.text(QStringLiteral("Codigo")), q.text(QStringLiteral("Nombre")));
    }
    const Decimal rate = Decimal::fromString(u"36.50");

    RowWriter inventario(db, QStringLiteral("INVENTARIO"),
                         {QStringLiteral("CodigoBarra"),
                          QStringLiteral("Nombre"),
                          QStringLiteral("Referencia"),
                          QStringLiteral("CodigoMarca"),
                          QStringLiteral("Talla"),
                          QStringLiteral("CodigoColor"),
                          QStringLiteral("Fabricante"),
                          QStringLiteral("TipoImpuesto"),
                          QStringLiteral("UltimaActualizacion"),
                          QStringLiteral("FechaPrimerMovimiento"),
                          QStringLiteral("PuntoReorden"),
                          QStringLiteral("Nota"),
                          QStringLiteral("PrecioDetal"),
                          QStringLiteral("PrecioMayor"),
                          QStringLiteral("PrecioAfiliado"),
                          QStringLiteral("Promocion"),
                          QStringLiteral("PrecioPromocion"),
                          QStringLiteral("FechaInicial"),
                          QStringLiteral("FechaFinal"),
                          QStringLiteral("Categoria"),
                          QStringLiteral("ExistenciaInicial"),
                          QStringLiteral("Existencia"),
                          QStringLiteral("CostoInicial"),
                          QStringLiteral("CostoPromedio"),
                          QStringLiteral("UltimoCosto"),
                          QStringLiteral("CostoDolar"),
                          QStringLiteral("Tipo"),
                          QStringLiteral("Status"),
                          QStringLiteral("Serializado"),
                          QStringLiteral("CodigoBarraAnt")});
    const QDateTime created(today.addDays(-90), QTime(9, 0));

    Dice dice(20240521);
    int item = 0;
    int model = 0;
    for (int k = 0; k < kinds().size(); ++k) {
        const Kind& kind = kinds()[k];
        // Two brands per kind of article. The jeans of both brands share one reference, as
        // happens with suppliers' style codes: only reference and brand together name a model.
        for (int b = 0; b < 2; ++b, ++model) {
            const QString brand = kBrands[(k + b * 3) % kBrands.size()];
            const QString reference = QLatin1String(kind.prefix) == QLatin1String("JEA")
                                          ? QStringLiteral("JEA-501")
                                          : QStringLiteral("%1-%2")
                                                .arg(QLatin1String(kind.prefix))
                                                .arg(101 + b * 100 + k);

            const Decimal unitCost = Decimal(dice.between(kind.costFrom * 2, kind.costTo * 2)) /
                                     Decimal(2); // to the half bolívar
            const Decimal lastCost = (unitCost + percentOf(unitCost, 3)).rounded(2);
            const Decimal retail = percentOf(unitCost, dice.between(170, 210)).rounded(0);
            const Decimal wholesale = percentOf(retail, 85).rounded(2);
            const Decimal member = percentOf(retail, 92).rounded(2);

            // A few models on promotion now, one whose promotion ended and one that starts soon.
            Promotion promo;
            if (model % 9 == 2 || model == 31) {
                promo = {1, percentOf(retail, 80).rounded(2),
                         QDateTime(today.addDays(-3), QTime(0, 0)),
                         QDateTime(today.addDays(27), QTime(0, 0))};
            } else if (model == 5) {
                promo = {1, percentOf(retail, 75).rounded(2),
                         QDateTime(today.addDays(-40), QTime(0, 0)),
                         QDateTime(today.addDays(-10), QTime(0, 0))};
            } else if (model == 8) {
                promo = {1, percentOf(retail, 85).rounded(2),
                         QDateTime(today.addDays(5), QTime(0, 0)),
                         QDateTime(today.addDays(35), QTime(0, 0))};
            }

            // Two to four colours per model, different ones, from the palette.
            QStringList colours;
            const int colourCount = dice.between(2, 4);
            int start = dice.between(0, int(kPalette.size()) - 1);
            for (int c = 0; c < colourCount; ++c)
                colours << kPalette[(start + c * 5) % kPalette.size()];

            for (const QString& size : kind.sizes) {
                for (const QString& colour : colours) {
                    const QString barcode = ean13(++item);
                    const QString name = QString::fromUtf8(kind.name).trimmed() +
                                         QStringLiteral(" T:") + size + QLatin1Char(' ') +
                                         colourNames.value(colour).left(13);
                    const int stock = dice.between(4, 36);
                    inventario.insert({barcode,
                                       name,
                                       reference,
                                       brand,
                                       size,
                                       colour,
                                       QString::fromLatin1(kind.maker),
                                       kind.tax,
                                       created,
                                       created,
                                       3,
                                       QStringLiteral(""),
                                       money(retail),
                                       money(wholesale),
                                       money(member),
                                       promo.active,
                                       money(promo.price),
                                       promo.from,
                                       promo.to,
                                       QString::fromLatin1(kind.category),
                                       stock,
                                       stock,
                                       cost(unitCost),
                                       cost(unitCost),
                                       cost(lastCost),
                                       cost((unitCost / rate).rounded(5)),
                                       0,
                                       1,
                                       0,
                                       barcode});
                }
            }
        }
    }

    // Services: sold like any article but without stock (Tipo 1).
    struct Service {
        const char* reference;
        const char* name;
        int price;
    };
    const QList<Service> services = {{"SRV-01", "ENVOLTURA DE REGALO", 60},
                                     {"SRV-02", "AJUSTE DE RUEDO", 150}};
    for (const Service& s : services) {
        const QString barcode = ean13(++item);
        const Decimal price(s.price);
        inventario.insert({barcode,
                           QString::fromUtf8(s.name) + QStringLiteral(" T:U SIN COLOR"),
                           QString::fromLatin1(s.reference),
                           QStringLiteral("0"),
                           QStringLiteral("U"),
                           QStringLiteral("0"),
                           QStringLiteral("000"),
                           1,
                           created,
                           created,
                           0,
                           QStringLiteral(""),
                           money(price),
                           money(price),
                           money(price),
                           0,
                           money(Decimal()),
                           QVariant(),
                           QVariant(),
                           QStringLiteral("060101"),
                           0,
                           0,
                           cost(Decimal()),
                           cost(Decimal()),
                           cost(Decimal()),
                           cost(Decimal()),
                           1,
                           1,
                           0,
                           barcode});
    }
}

} // namespace orvo::shell::demo::detail
