// CMatLab_Matrix_Data: writes vectors of numbers as text files that numerical packages and spreadsheets load.
//
// A file holds one vector: comment lines that begin with '#' and have the variable's name and the count, then one value
// a line with 17 significant digits, so that it reads back to the same bits; what is no finite number reads
// "NaN", "Inf" or "-Inf". One thread at a time for each object.
#pragma once

#include <string>

namespace orsanta {

class CMatLab_Matrix_Data {
 public:
  // Sets the folder that the files go to, under the working directory. It is made with the first file.
  void SetBaseSaveFileDir_SubDir(const wchar_t* dir, int /*reserved*/) { m_Sub_Folder = dir; }

  // Writes `count` values to the file "<name>", with ".txt" behind a name that has no extension. A file of that name is
  // replaced, and only by a whole one. The variable in the file has the name without its extension, with '_' for each
  // character that a variable's name cannot have; a comment line keeps the name as it was given.
  // Returns 1, or 0 after a message box with the file's name and the reason when it cannot be written.
  int Save_Double_Vector(const double* data, int count, const wchar_t* name);

 private:
  std::wstring m_Sub_Folder;
};

}  // namespace orsanta
