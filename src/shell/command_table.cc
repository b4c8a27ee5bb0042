#include "shell/command_table.h"

#include "shell/about_command.h"
#include "shell/classify_commands.h"
#include "shell/load_commands.h"
#include "shell/pending_command.h"
#include "shell/remove_commands.h"
#include "shell/validation_commands.h"

namespace shell {

namespace {

constexpr CommandSpec kCommands[] = {
    {L"TAXOR_CLASSIFY", "attach a class and its records to the selected entities", true,
     classifyCommand},
    {L"TAXOR_CLASSIFY_AUTO", "classify the selected entities by their drawing properties", true,
     classifyAutoCommand},
    {L"TAXOR_DRAW", "draw new entities of a class", true, pendingCommand},
    {L"TAXOR_GUI", "open the classification palettes", false, pendingCommand},
    {L"TAXOR_PROPERTIES", "open the class properties palette", false, pendingCommand},
    {L"TAXOR_LOAD", "load a class-definition file", false, loadCommand},
    {L"TAXOR_RESTORE", "re-apply a class's drawing properties to its entities", true,
     restoreCommand},
    {L"TAXOR_RELOAD", "read the current class-definition file again", false, reloadCommand},
    {L"TAXOR_REMOVE", "take one class off the selected entities", true, removeCommand},
    {L"TAXOR_REMOVE_ALL", "take every known class off the selected entities", true,
     removeAllCommand},
    {L"TAXOR_SEL", "select the entities of a class or group", true, pendingCommand},
    {L"TAXOR_SEL_CLASS", "select entities conforming to a class", true, pendingCommand},
    {L"TAXOR_SEL_EXT", "select by class with property conformity", true, pendingCommand},
    {L"TAXOR_SEL_ALL", "select every classified entity", true, pendingCommand},
    {L"TAXOR_SEL_NULL", "select unclassified entities", true, pendingCommand},
    {L"TAXOR_ASSERT", "select valid or invalid classified entities", true, assertCommand},
    {L"TAXOR_SORT", "order the display by class priority", true, pendingCommand},
    {L"TAXOR_SEL_CLASSIFIED", "select entities by classification state", true, pendingCommand},
    {L"TAXOR_SEL_DUPLICATES", "select entities with duplicate records", true, pendingCommand},
    {L"TAXOR_DEL_DUPLICATES", "delete duplicate records", true, pendingCommand},
    {L"TAXOR_ROUND", "round real values to their definitions' precision", true, pendingCommand},
    {L"TAXOR_TEMPLATE", "write a template class-definition file from the drawing", false,
     pendingCommand},
    {L"TAXOR_TYPE", "report the object types of the selected entities", false, pendingCommand},
    {L"TAXOR_STAT", "report classification statistics", true, statCommand},
    {L"TAXOR_ABOUT", "show the product name and version", false, aboutCommand},
    {L"TAXOR_IMPL_INSRT", "place a block of a class", true, pendingCommand},
    {L"TAXOR_IMPL_TXT", "place a text of a class", true, pendingCommand},
    {L"TAXOR_IMPL_MTXT", "place an mtext of a class", true, pendingCommand},
};

}  // namespace

std::span<const CommandSpec> commandTable() { return kCommands; }

}  // namespace shell
