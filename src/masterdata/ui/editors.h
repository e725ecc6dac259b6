#pragma once
// The master data editors: species, quality classes, the four class tables and the freely
// defined bark deductions. Each opens in "Neu" or "Ändern"; in "Ändern" its ok steps through
// the hub's list (after the last row back to the first).
#include "common/openerrows.h"
#include "masterdata/barkranges.h"
#include "masterdata/classtables.h"
#include "masterdata/species.h"

#include <QDialog>
#include <QList>

class QCheckBox;
class QComboBox;
class QFormLayout;
class QLineEdit;
class QPushButton;

namespace tarvik {

class MasterEditor : public QDialog {
    Q_OBJECT
public:
    EditMode mode() const { return m_mode; }
    std::optional<qint32> currentId() const;
    QLineEdit* field(int index) const { return m_fields.value(index); }

protected:
    // ids: the rows of the hub's list in its order; start: the marked one ("Ändern").
    MasterEditor(const AppContext& context, EditMode mode, QList<qint32> ids, std::optional<qint32> start, QWidget* parent);
    // Called once from the subclass's constructor, after its fields exist.
    void finish(const QString& objectName, const QString& title);
    QLineEdit* addField(int index, const QString& caption, int maxLength, bool numeric);

    virtual void load(qint32 id) = 0;
    virtual void clearForNext() = 0;          // after a store in "Neu"
    virtual bool store(std::optional<qint32> id) = 0;

    AppContext m_context;
    QFormLayout* m_form = nullptr;

private:
    void onOk();

    EditMode m_mode;
    OpenerRows m_rows;
    QList<QLineEdit*> m_fields;
};

class SpeciesEditor final : public MasterEditor {
    Q_OBJECT
public:
    SpeciesEditor(const AppContext& context, EditMode mode, QList<qint32> ids, std::optional<qint32> start, QWidget* parent = nullptr);

private:
    void load(qint32 id) override;
    void clearForNext() override;
    bool store(std::optional<qint32> id) override;
    QCheckBox* m_broadleaf = nullptr;
};

class QualityEditor final : public MasterEditor {
    Q_OBJECT
public:
    QualityEditor(const AppContext& context, EditMode mode, QList<qint32> ids, std::optional<qint32> start, QWidget* parent = nullptr);

private:
    void load(qint32 id) override;
    void clearForNext() override;
    bool store(std::optional<qint32> id) override;
};

class ClassEditor final : public MasterEditor {
    Q_OBJECT
public:
    ClassEditor(const AppContext& context, ClassTable table, EditMode mode, QList<qint32> ids, std::optional<qint32> start,
                QWidget* parent = nullptr);
    static QString windowName(ClassTable table);

private:
    void load(qint32 id) override;
    void clearForNext() override;
    bool store(std::optional<qint32> id) override;
    ClassTable m_table;
};

class BarkRangeEditor final : public MasterEditor {
    Q_OBJECT
public:
    BarkRangeEditor(const AppContext& context, EditMode mode, QList<qint32> ids, std::optional<qint32> start,
                    QWidget* parent = nullptr);

private:
    void load(qint32 id) override;
    void clearForNext() override;
    bool store(std::optional<qint32> id) override;
    BarkRangeForm form() const;
    QComboBox* m_species = nullptr; // kombaumart
    BarkRangeForm m_stored;
};

} // namespace tarvik
