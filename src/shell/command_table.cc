#include "shell/command_table.h"

#include "shell/about_command.h"
#include "shell/classify_commands.h"
#include "shell/load_commands.h"
#include "shell/maintenance_commands.h"
#include "shell/pending_command.h"
#include "shell/remove_commands.h"
#include "shell/selection_commands.h"
#include "shell/template_commands.h"
#include "shell/validation_commands.h"

namespace shell {

namespace {

constexpr CommandSpec kCommands[] = {
    {L"TAXOR_CLASSIFY", "apply a named class to the selected entities: drawing properties, records",
     true, classifyCommand},
    {L"TAXOR_CLASSIFY_AUTO",
     "classify by drawing properties, or apply the properties of the recorded class", true,
     classifyAutoCommand},
    {L"TAXOR_DRAW", "draw entities of a class with the host's commands, classifying each", true,
     pendingCommand},
    {L"TAXOR_GUI", "show the palettes of the class tree, recent and favorite classes", false,
     pendingCommand},
    {L"TAXOR_PROPERTIES", "show the properties palette (the field values of a class)", false,
     pendingCommand},
    {L"TAXOR_LOAD", "load a class-definition file", false, loadCommand},
    {L"TAXOR_RESTORE",
     "re-apply the drawing properties of a named class, or of each entity's classes", true,
     restoreCommand},
    {L"TAXOR_RELOAD", "read the current class-definition file again", false, reloadCommand},
    {L"TAXOR_REMOVE", "take the records of a named class off the selected entities", true,
     removeCommand},
    {L"TAXOR_REMOVE_ALL", "delete every record of a loaded class from the selected entities", true,
     removeAllCommand},
    {L"TAXOR_SEL", "select the entities that carry a named class, or a class of a named group",
     true, selectCommand},
    {L"TAXOR_SEL_CLASS", "select the entities that carry a class of a named tree group", true,
     selectGroupCommand},
    {L"TAXOR_SEL_EXT",
     "select entities that do or do not match a named class (records, properties)", true,
     selectExtendedCommand},
    {L"TAXOR_SEL_ALL", "select entities that do or do not match the classes their records name",
     true, selectAllCommand},
    {L"TAXOR_SEL_NULL", "select entities whose records have empty text fields (all or required)",
     true, selectNullCommand},
    {L"TAXOR_ASSERT", "select the entities whose records break the rules of their class", true,
     assertCommand},
    {L"TAXOR_SORT", "order the display by class priority, unclassified entities at the bottom",
     true, sortCommand},
    {L"TAXOR_SEL_CLASSIFIED", "select entities that do or do not carry a class of the loaded file",
     true, selectClassifiedCommand},
    {L"TAXOR_SEL_DUPLICATES",
     "select entities carrying a class's records more than once; name the classes", true,
     selectDuplicatesCommand},
    {L"TAXOR_DEL_DUPLICATES", "delete duplicate records of a class, keeping one per table", true,
     deleteDuplicatesCommand},
    {L"TAXOR_ROUND", "round the real values in records to the decimals the class file uses", true,
     roundCommand},
    {L"TAXOR_TEMPLATE", "write a template class-definition file from the selected entities", false,
     templateCommand},
    {L"TAXOR_TYPE", "print the object types of the selected entities", false, typeCommand},
    {L"TAXOR_STAT", "count the selected entities per class and show the report", true, statCommand},
    {L"TAXOR_ABOUT", "show the product name and version", false, aboutCommand},
    {L"TAXOR_IMPL_INSRT", "insert a block reference of a class (run by TAXOR_DRAW)", true,
     pendingCommand},
    {L"TAXOR_IMPL_TXT", "place a text of a class (run by TAXOR_DRAW)", true, pendingCommand},
    {L"TAXOR_IMPL_MTXT", "place an mtext of a class (run by TAXOR_DRAW)", true, pendingCommand},
};

}  // namespace

std::span<const CommandSpec> commandTable() { return kCommands; }

}  // namespace shell
