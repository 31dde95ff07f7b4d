// Module contents of the package tree. The classes, enumerations and value types are entered here
// as they are bound; each list keeps the fixed order in which the modules receive them.
#include "module/module_contents.h"

const ModuleContents kRootContents = {};
const ModuleContents kTextContents = {};
const ModuleContents kDrawing2DContents = {};
const ModuleContents kDesignContents = {};
const ModuleContents kPrintingContents = {};
const ModuleContents kImagingContents = {};
const InteropContents kInteropContents = {};
const GenericContents kGenericContents = {};

PyTypeObject* const kRootDescriptorTypes[] = {nullptr};
const char* const kRootDescriptorNames[] = {nullptr};
