// The texts of Qt's own windows and menus in Chinese: those of file dialogs, of their questions, and of edits. Qt's
// translations are a package of their own that a machine need not have. Qt thread only.
#pragma once

namespace orsanta {

// Once, when the application stands.
void Install_Chinese_Texts();

}  // namespace orsanta
