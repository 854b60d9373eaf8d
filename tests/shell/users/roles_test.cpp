#include "shell/users/roles.h"
#include "support/test_db.h"

#include <QVariant>
#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::shell::users;

namespace {

class Roles : public test::DbTest {
protected:
    void member(const QString& user, const QString& groupCode, const QString& groupName) {
        if (count("GRUPOS", "CodGrupo = ?", {groupCode}) == 0)
            exec("INSERT INTO GRUPOS (CodGrupo, NombreGrupo) VALUES (?, ?)",
                 {groupCode, groupName});
        if (count("USUARIOS", "CodUsuario = ?", {user}) == 0)
            exec("INSERT INTO USUARIOS (CodUsuario, NombreUsuario, Pasword, Status) VALUES (?, ?, "
                 "'', 1)",
                 {user, user});
        exec("INSERT INTO USUARIOGRUPO (CodUsuario, CodGrupo) VALUES (?, ?)", {user, groupCode});
    }
};

} // namespace

TEST_F(Roles, GroupQualifiesByCodeOrByName) {
    member("ANA", "ADMI", "JEFES");
    member("LUIS", "G7", "ADMINISTRADOR");
    member("EVA", "G8", "Administrador"); // names compare without regard to case
    member("PEPE", "CAJE", "CAJERO");
    EXPECT_TRUE(isAdministrator(db(), "ANA"));
    EXPECT_TRUE(isAdministrator(db(), "LUIS"));
    EXPECT_TRUE(isAdministrator(db(), "EVA"));
    EXPECT_FALSE(isAdministrator(db(), "PEPE"));
    EXPECT_FALSE(isAdministrator(db(), "NADIE"));

    member("SUP1", "SUPINVE", "X");
    member("SUP2", "sinve", "Y");
    member("SUP3", "G9", "SUPERVISOR DE INVENTARIO");
    EXPECT_TRUE(isInventorySupervisor(db(), "SUP1"));
    EXPECT_TRUE(isInventorySupervisor(db(), "SUP2"));
    EXPECT_TRUE(isInventorySupervisor(db(), "SUP3"));
    EXPECT_FALSE(isInventorySupervisor(db(), "ANA"));
}

TEST_F(Roles, SystemsCountsOnlyByCodeAndOnlyForExistingUsers) {
    member("SIS", "SISTEMAS", "INFORMATICA");
    member("OTRO", "G1", "SISTEMAS"); // the name alone does not make Systems
    EXPECT_TRUE(isSystems(db(), "SIS"));
    EXPECT_FALSE(isSystems(db(), "OTRO"));
    exec("DELETE FROM USUARIOS WHERE CodUsuario = 'SIS'");
    EXPECT_FALSE(isSystems(db(), "SIS")); // membership left behind
}

TEST_F(Roles, PricesAndCostsAreSeparateRights) {
    member("VP", "G1", "VER PRECIOS");
    EXPECT_TRUE(maySeePrices(db(), "VP"));
    EXPECT_FALSE(maySeeCosts(db(), "VP"));

    member("VC", "G2", "VER COSTOS");
    member("C1", "G3", "COSTO");
    member("C2", "G4", "COSTOS");
    EXPECT_TRUE(maySeeCosts(db(), "VC"));
    EXPECT_TRUE(maySeeCosts(db(), "C1"));
    EXPECT_TRUE(maySeeCosts(db(), "C2"));
    EXPECT_FALSE(maySeePrices(db(), "VC"));

    member("AD", "ADMI", "ADMINISTRADOR");
    EXPECT_TRUE(maySeePrices(db(), "AD"));
    EXPECT_FALSE(maySeeCosts(db(), "AD"));

    member("SI", "SISTEMAS", "INFORMATICA");
    member("SN", "G5", "SIST");
    EXPECT_TRUE(maySeeCosts(db(), "SI"));
    EXPECT_TRUE(maySeePrices(db(), "SI"));
    EXPECT_TRUE(maySeeCosts(db(), "SN"));
    EXPECT_TRUE(maySeePrices(db(), "SN"));
}

TEST_F(Roles, RemissionChecking) {
    member("CH", "CHEQREMI", "CHEQUEO");
    member("DC", "DCHEQREMI", "DESCHEQUEO");
    member("SN", "G1", "SISTEMAS");
    EXPECT_TRUE(mayCheckRemissions(db(), "CH"));
    EXPECT_FALSE(mayUncheckRemissions(db(), "CH"));
    EXPECT_TRUE(mayUncheckRemissions(db(), "DC"));
    EXPECT_FALSE(mayCheckRemissions(db(), "DC"));
    EXPECT_TRUE(mayCheckRemissions(db(), "SN"));
    EXPECT_TRUE(mayUncheckRemissions(db(), "SN"));
}
