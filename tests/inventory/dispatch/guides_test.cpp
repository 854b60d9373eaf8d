#include "inventory/dispatch/dispatch_print.h"
#include "inventory/dispatch/guides.h"
#include "inventory/dispatch/remissions.h"
#include "inventory/purchases/purchase_support.h"
#include "inventory/purchases/receptions.h"

using namespace orvo;
using namespace orvo::inventory::dispatch;
namespace purchases = orvo::inventory::purchases;
using test::d;
using test::refusal;

namespace {

class GuidesTest : public test::PurchaseTest {
protected:
    void SetUp() override {
        PurchaseTest::SetUp();
        article("A1", "CAMISA-A", "10", "7");
        exec("INSERT INTO TRABAJADORES (Cedula, Nombre, Status) VALUES ('V-1', 'PEDRO PEREZ', "
             "1), ('V-2', 'RETIRADO', 0)");
        exec("INSERT INTO VEHICULOS (Placa, Marca, Modelo, Status) VALUES ('AB123CD', 'FORD', "
             "'CARGO', 1), ('XX000XX', 'FIAT', 'UNO', 0)");
        for (int i = 0; i < 3; ++i)
            remission(i < 2);
    }

    void remission(bool approve) {
        const auto& k = remissionKind();
        purchases::Reception r;
        r.branch = "01";
        r.originType = purchases::ReceptionOrigin::OtherDocuments;
        const long long n = purchases::saveReception(db(), r, k);
        purchases::saveBox(db(), n, {0, "ANA", false, {{"A1", {}, d("2")}}}, true, k);
        purchases::saveBox(db(), n, {0, "ANA", false, {{"A1", {}, d("1")}}}, true, k);
        if (approve)
            purchases::approveReception(db(), n, "ANA", k);
    }

    static Guide guide() {
        Guide g;
        g.driver = "V-1";
        g.vehicle = "AB123CD";
        return g;
    }

    long long onGuide(long long remission) const {
        return scalar("SELECT GuiaDespacho FROM REMISION WHERE Numero = ?", {remission})
            .toLongLong();
    }
};

} // namespace

TEST_F(GuidesTest, AGuideCarriesApprovedRemissionsOnOneTripOnly) {
    // Only active workers drive, only active vehicles go.
    ASSERT_EQ(drivers(db()).size(), 1);
    EXPECT_EQ(drivers(db())[0].code, "V-1");
    ASSERT_EQ(vehicles(db()).size(), 1);

    Guide g = guide();
    EXPECT_EQ(refusal([&] { saveGuide(db(), g); }),
              "La Guia de Despacho debe contener al menos un items...!");
    EXPECT_EQ(refusal([&] { addRemission(db(), g, 3); }),
              "La remisión Nº 3 no existe o no está aprobada...!");
    addRemission(db(), g, 1);
    EXPECT_EQ(refusal([&] { addRemission(db(), g, 1); }),
              "Ya la remisión se encuentra registrada en la guia de despacho");
    addRemission(db(), g, 2);
    EXPECT_EQ(g.remissions[0].boxes, 2);
    EXPECT_EQ(g.remissions[0].units, d("3"));
    const long long number = saveGuide(db(), g);
    EXPECT_EQ(number, 1);
    EXPECT_EQ(onGuide(1), 1);
    EXPECT_EQ(onGuide(2), 1);

    // A second guide cannot take a remission already travelling.
    Guide other = guide();
    EXPECT_EQ(refusal([&] { addRemission(db(), other, 2); }),
              "La remisión Nº 2 ya viaja en la guia de despacho Nº 1...!");

    // Remission 2 leaves the first guide and goes on the second.
    Guide first = *loadGuide(db(), number);
    ASSERT_EQ(first.remissions.size(), 2);
    first.remissions.removeLast();
    saveGuide(db(), first);
    EXPECT_EQ(onGuide(2), 0);
    addRemission(db(), other, 2);
    EXPECT_EQ(saveGuide(db(), other), 2);
    EXPECT_EQ(onGuide(2), 2);

    const auto printed = guideDocument(db(), number);
    EXPECT_TRUE(printed.html.contains("PEDRO PEREZ"));
    EXPECT_TRUE(printed.html.contains("AB123CD"));

    approveGuide(db(), number);
    EXPECT_EQ(scalar("SELECT Status FROM GUIADESPACHO WHERE Numero = 1").toInt(), 1);
    EXPECT_EQ(refusal([&] { approveGuide(db(), number); }),
              "La Guia de Despacho no existe o ya fue aprobada...!");
    EXPECT_EQ(refusal([&] { saveGuide(db(), first); }),
              "La Guia de Despacho no existe o ya fue aprobada...!");
    EXPECT_EQ(refusal([&] { deleteGuide(db(), number); }),
              "La Guia de Despacho no existe o ya fue aprobada...!");
    // Deleting the open one lets its remission travel again.
    deleteGuide(db(), 2);
    EXPECT_EQ(onGuide(2), 0);
}
