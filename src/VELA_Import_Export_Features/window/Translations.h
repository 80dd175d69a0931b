// The program's translations: five files beside the executable, installed and removed as a group.
#pragma once

#include <QString>

// "CH": Chinese; the first file that fails to load stops the sequence, those before it stay, and the result
// is false. "ENG": English, all five are removed. Any other text does nothing. The translators live as long
// as the process.
bool LoadTranslations(const QString& language);
