#include "shell/main_window/menu_tree.h"

#include "shell/main_window/menu_fixture.h"
#include "support/test_db.h"

#include <gtest/gtest.h>

using namespace orvo;
using namespace orvo::shell;
using orvo::test::DbTest;

namespace {

QStringList captions(const QList<MenuNode>& nodes) {
    QStringList out;
    for (const MenuNode& n : nodes)
        out << n.caption;
    return out;
}

} // namespace

class MenuTreeTest : public DbTest {
protected:
    void SetUp() override {
        DbTest::SetUp();
        test::insertMenuData(
            [this](const QString& sql, std::initializer_list<QVariant> v) { exec(sql, v); });
    }
};

TEST_F(MenuTreeTest, UnionOfTheUsersGroupsInOrdenThenNumNodo) {
    const QList<MenuNode> menu = loadUserMenu(db(), QStringLiteral("CAJERO1"), true);
    // Inventario is 'N' for all of CAJERO1's groups: neither it nor its granted leaf is offered.
    ASSERT_EQ(captions(menu), (QStringList{QStringLiteral("Ventas"), QStringLiteral("Clave")}));
    // Devoluciones: 'N' from CAJA, 'S' from SUPER, so shown; equal Orden puts NumNodo 1 first.
    EXPECT_EQ(captions(menu[0].children),
              (QStringList{QStringLiteral("Devoluciones"), QStringLiteral("Facturación"),
                           QStringLiteral("_")}));
    EXPECT_TRUE(menu[0].children[2].isSeparator());
    EXPECT_EQ(menu[0].children[1].form, QStringLiteral("frmPruebaFacturacion"));
    EXPECT_EQ(menu[1].form, QStringLiteral("frmNoExiste"));

    // The tree has no separators; a user in CAJA only does not see Devoluciones.
    const QList<MenuNode> tree = loadUserMenu(db(), QStringLiteral("OTRO"), false);
    ASSERT_EQ(captions(tree), (QStringList{QStringLiteral("Ventas"), QStringLiteral("Clave")}));
    EXPECT_EQ(captions(tree[0].children), QStringList{QStringLiteral("Facturación")});

    EXPECT_TRUE(loadUserMenu(db(), QStringLiteral("NADIE"), true).isEmpty());
}

TEST_F(MenuTreeTest, OnlyLeavesNameAScreen) {
    EXPECT_EQ(formOfNode(db(), QStringLiteral("VEN01")), QStringLiteral("frmPruebaFacturacion"));
    EXPECT_FALSE(formOfNode(db(), QStringLiteral("VEN")).has_value());
    EXPECT_FALSE(formOfNode(db(), QStringLiteral("NOHAY")).has_value());
}

TEST_F(MenuTreeTest, GrantOfAnyGroupOpensTheNode) {
    EXPECT_TRUE(nodeGranted(db(), QStringLiteral("CAJERO1"), QStringLiteral("VEN02")));
    EXPECT_FALSE(nodeGranted(db(), QStringLiteral("OTRO"), QStringLiteral("VEN02")));
    EXPECT_FALSE(nodeGranted(db(), QStringLiteral("CAJERO1"), QStringLiteral("VEN03")));
    EXPECT_FALSE(nodeGranted(db(), QStringLiteral("NADIE"), QStringLiteral("VEN01")));
}
