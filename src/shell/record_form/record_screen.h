#pragma once

#include <QList>
#include <QWidget>

namespace orvo::shell {

// A screen that the record toolbar (tlbregistro) drives. The toolbar only calls perform(); the
// framework here asks the questions, shows the messages and moves between browsing, adding and
// modifying, and calls the hooks below for what only the screen can do.
//
// A screen derives from RecordScreen, marks its key control with markKey() (Tag "COD": it stays
// disabled while modifying), implements the pure hooks and overrides any generic action it does
// its own way. The dynamic properties "orvoEditing" (bool) and "orvoMode" ("browsing", "adding",
// "modifying", "searching") follow the mode, for the main window's questions on leaving.
class RecordScreen : public QWidget {
    Q_OBJECT
public:
    enum class Mode { Browsing, Adding, Modifying, Searching };
    enum class Action { New, Modify, Delete, Search, Print, Cancel, Save, Approve, Exit };

    explicit RecordScreen(QWidget* parent = nullptr);

    Mode mode() const { return m_mode; }
    bool isEditing() const { return m_mode == Mode::Adding || m_mode == Mode::Modifying; }
    // Rows of the screen's query set (rcsConsulta) as loaded now.
    virtual int recordCount() const = 0;
    // Which toolbar buttons this screen offers at all (default: all but Aprobar).
    virtual bool offers(Action action) const;
    // Whether the button for `action` is usable in the current mode and record count.
    bool canPerform(Action action) const;
    // The caption used in titles of questions ("Eliminar " + caption).
    QString caption() const;

    // Runs one toolbar action with the framework's questions and messages. Errors are shown, never
    // thrown. Returns true when the action went through.
    bool perform(Action action);

    // The key control (Tag "COD"): enabled when adding or searching, never while modifying.
    static void markKey(QWidget* control);
    static bool isKey(const QWidget* control);
    // A control whose emptiness stops Guardar, with the words naming it in the message.
    static void markRequired(QWidget* control, const QString& description);

    // Input controls (line edits, text edits, combo boxes, check boxes, option buttons, date
    // pickers, spin boxes) in tab order, outside any grid.
    QList<QWidget*> inputControls() const;

signals:
    // Mode or record count changed: the toolbar re-evaluates its buttons.
    void recordStateChanged();

protected:
    void setMode(Mode mode);

    // Hooks every screen provides.
    virtual void requery() = 0;       // reloads rcsConsulta, keeping the current key if it can
    virtual void afterNavigate() = 0; // DespuesDeNavegar: copies the current row into the controls
    virtual void save() = 0;          // Guardar: writes (insert when adding, update when modifying)
    virtual void remove() = 0;        // Eliminar: deletes the current row; throws when refused
    virtual void print() = 0;         // Imprimir: the catalogue report

    // Generic actions; override to do them differently.
    virtual void newRecord(); // empties and enables the inputs, proposes a key, focuses the first
    virtual void modifyRecord(); // enables the inputs except the key
    virtual void cancelRecord(); // empties and disables the inputs, shows the current row again
    virtual void beginSearch();  // empties and enables every input for typing the criterion
    virtual void runSearch();    // finds the first row matching the typed values
    virtual void approve() {}
    // Checks the required controls; throws UserError naming the first empty one.
    virtual void checkRequired() const;
    // Key proposed by Nuevo (empty: the user types it).
    virtual QString proposedKey() const { return {}; }

    // Enter in a field moves to the next one; entering a line edit selects its text. Screens call
    // this once their controls exist.
    void installFieldBehaviour();
    bool eventFilter(QObject* watched, QEvent* event) override;

    // Helpers for the generic actions.
    void clearInputs();
    void enableInputs(bool enabled, bool keyToo);
    void focusFirstInput();

private:
    bool performUnguarded(Action action);
    Mode m_mode = Mode::Browsing;
};

} // namespace orvo::shell
