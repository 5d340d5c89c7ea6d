// Saves vectors under arbitrary names. Whatever the name, there is one file with the values in the folder or a message,
// and nothing anywhere else.
#include "common/scripted_front.h"
#include "fuzz/fuzz.h"
#include "support/services/vector_file.h"

void Fuzz(std::string input) {
  using namespace orsanta;
  static const C_Temp_Folder folder;
  static const C_Scripted_Front_Holder front;
  const double value = 1.5;
  front->Clear_Record();
  CMatLab_Matrix_Data writer;
  writer.SetBaseSaveFileDir_SubDir(L"vectors", 0);
  const bool saved = writer.Save_Double_Vector(&value, 1, From_Utf8(input).c_str()) == 1;
  Demand(front->Boxes().size() == (saved ? 0 : 1), "no message of a failure, or one without");
  const std::filesystem::path vectors = folder.Path() / "vectors";
  const auto count = [](const auto& path) { return std::distance(std::filesystem::directory_iterator(path), {}); };
  Demand(count(folder.Path()) == 1 && count(vectors) == (saved ? 1 : 0), "a file in another place");
  const auto file = saved ? std::filesystem::directory_iterator(vectors)->path() : vectors;
  const std::string text = saved ? File_Text(file) : "";
  Demand(std::count(text.begin(), text.end(), '\n') == (saved ? 6 : 0), "no head of five lines");
  if (saved) std::filesystem::remove(file);
}
