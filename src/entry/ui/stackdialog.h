#pragma once
// EF_Eingabe_Schichtholz: sections of stacked wood measured by their three dimensions.
#include "entry/stackentry.h"
#include "entry/ui/entrywindow.h"

namespace tarvik {

class StackDialog : public EntryWindow {
    Q_OBJECT
public:
    StackDialog(const AppContext& context, qint32 harvestId, std::optional<qint32> sectionId,
                std::optional<qint32> lotNr = std::nullopt, QWidget* parent = nullptr);

protected:
    void addFields(QFormLayout* form) override;
    void loadEntry(qint32 id) override;
    void startNew() override { proposeSection(); }
    HarvestRows gridRows() const override;
    bool storeEntry() override;
    void afterNext() override;

private:
    StackForm read() const;
    void showDerived(const StackForm& form);
    void proposeSection();
};

} // namespace tarvik
