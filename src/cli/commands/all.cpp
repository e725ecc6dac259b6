#include "cli/commands/all.h"

namespace tarvik::cli {

const std::vector<std::unique_ptr<Command>>& allCommands()
{
    static const std::vector<std::unique_ptr<Command>> all = [] {
        std::vector<std::unique_ptr<Command>> list;
        list.push_back(makeInitCommand());
        list.push_back(makeHiebeCommand());
        list.push_back(makeHolzlisteCommand());
        list.push_back(makeListeCommand());
        list.push_back(makeRechnungCommand());
        list.push_back(makeEigeneAngabenCommand());
        list.push_back(makeAbnehmerCommand());
        list.push_back(makeDruckenCommand());
        list.push_back(makeNeuberechnenCommand());
        list.push_back(makeSicherungCommand());
        list.push_back(makeWiederherstellenCommand());
        list.push_back(makeKomprimierenCommand());
        list.push_back(makeUebernahmeCommand());
        list.push_back(makeGeraeteimportCommand());
        list.push_back(makeExportCommand());
        list.push_back(makeImportCommand());
        list.push_back(makeErechnungCommand());
        list.push_back(makeEldatCommand());
        return list;
    }();
    return all;
}

const Command* findCommand(const QString& name)
{
    for (const auto& command : allCommands())
        if (command->name() == name)
            return command.get();
    return nullptr;
}

} // namespace tarvik::cli
