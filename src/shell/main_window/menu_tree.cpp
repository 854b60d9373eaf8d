#include "shell/main_window/menu_tree.h"

#include "common/db/sql.h"

#include <QHash>

namespace orvo::shell {

namespace {

struct Row {
    MenuNode node;
    bool granted = false;
};

// Attaches each node under its parent; rows come level by level, so a parent is always placed
// before its children. A node whose parent is not offered has nowhere to go and is left out.
QList<MenuNode> buildTree(const QList<Row>& rows) {
    QList<MenuNode> roots;
    // Path of indexes to each placed node, so that children can be appended in place.
    QHash<QString, QList<int>> paths;
    for (const Row& r : rows) {
        if (!r.granted)
            continue;
        if (r.node.level <= 1) {
            paths.insert(r.node.code, {int(roots.size())});
            roots.append(r.node);
            continue;
        }
        const auto it = paths.constFind(r.node.parent);
        if (it == paths.constEnd())
            continue;
        QList<MenuNode>* siblings = &roots;
        MenuNode* parent = nullptr;
        for (int index : *it) {
            parent = &(*siblings)[index];
            siblings = &parent->children;
        }
        QList<int> path = *it;
        path.append(int(siblings->size()));
        siblings->append(r.node);
        paths.insert(r.node.code, path);
    }
    return roots;
}

} // namespace

QList<MenuNode> loadUserMenu(const QSqlDatabase& db, const QString& userCode, bool withSeparators) {
    QString sql = QStringLiteral(
        "SELECT S.Nivel, S.NodoPadre, GS.CodNodo, S.NomNodo, S.Imagen, MAX(GS.Ver) AS Ver, "
        "S.Orden, S.NumNodo, MAX(S.Forma) AS Forma "
        "FROM GRUPOSEG GS INNER JOIN SEG S ON GS.CodNodo = S.CodNodo "
        "INNER JOIN USUARIOGRUPO UG ON GS.CodGrupo = UG.CodGrupo "
        "WHERE UG.CodUsuario = ?");
    if (!withSeparators)
        sql += QStringLiteral(" AND S.NomNodo <> '_'");
    sql += QStringLiteral(" GROUP BY S.Nivel, S.NodoPadre, GS.CodNodo, S.NomNodo, S.Imagen, "
                          "S.Orden, S.NumNodo ORDER BY S.Nivel, S.Orden, S.NumNodo");
    db::Sql q(db, sql);
    q.bindAll({userCode}).exec();
    QList<Row> rows;
    while (q.next()) {
        Row r;
        r.node.code = q.text(QStringLiteral("CodNodo")).trimmed();
        r.node.caption = q.text(QStringLiteral("NomNodo")).trimmed();
        r.node.parent = q.text(QStringLiteral("NodoPadre")).trimmed();
        r.node.image = q.text(QStringLiteral("Imagen")).trimmed();
        r.node.form = q.text(QStringLiteral("Forma")).trimmed();
        r.node.level = q.integer(QStringLiteral("Nivel"));
        r.granted = q.text(QStringLiteral("Ver")).trimmed() == QLatin1String("S");
        rows.append(r);
    }
    return buildTree(rows);
}

std::optional<QString> formOfNode(const QSqlDatabase& db, const QString& nodeCode) {
    db::Sql q(db, QStringLiteral("SELECT Forma, CodNodo FROM SEG WHERE CodNodo = ? AND "
                                 "COALESCE(EsPadre, 0) = 0"));
    q.bindAll({nodeCode}).exec();
    if (!q.next())
        return std::nullopt;
    return q.text(QStringLiteral("Forma")).trimmed();
}

bool nodeGranted(const QSqlDatabase& db, const QString& userCode, const QString& nodeCode) {
    const QVariant ver = db::scalar(
        db,
        QStringLiteral("SELECT MAX(GS.Ver) AS Ver FROM GRUPOSEG GS INNER JOIN USUARIOGRUPO UG ON "
                       "GS.CodGrupo = UG.CodGrupo WHERE UG.CodUsuario = ? AND GS.CodNodo = ?"),
        {userCode, nodeCode});
    return ver.toString().trimmed() == QLatin1String("S");
}

bool formGranted(const QSqlDatabase& db, const QString& userCode, const QString& formName) {
    const QString form = formName.trimmed().toUpper();
    if (!db::exists(db,
                    QStringLiteral("SELECT 1 FROM SEG WHERE UPPER(Forma) = ? AND "
                                   "COALESCE(EsPadre, 0) = 0"),
                    {form}))
        return true;
    if (userCode.trimmed().isEmpty())
        return false;
    return db::exists(db,
                      QStringLiteral("SELECT 1 FROM SEG S INNER JOIN GRUPOSEG GS ON GS.CodNodo = "
                                     "S.CodNodo INNER JOIN USUARIOGRUPO UG ON GS.CodGrupo = "
                                     "UG.CodGrupo WHERE UG.CodUsuario = ? AND UPPER(S.Forma) = ? "
                                     "AND GS.Ver = 'S' AND COALESCE(S.EsPadre, 0) = 0"),
                      {userCode.trimmed(), form});
}

} // namespace orvo::shell
