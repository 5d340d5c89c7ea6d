#include "support/services/vector_file.h"

#include <charconv>
#include <cmath>
#include <filesystem>
#include <system_error>

#include "support/base/process.h"
#include "support/dialog/message_box.h"
#include "support/system/atomic_file.h"
#include "support/system/working_folder.h"

namespace orsanta {

namespace {

constexpr int Digits = 17;  // the least with which every double reads back
constexpr unsigned Rights = 0644;

// A form that numerical packages take for a variable: letters, digits and '_', no digit in front.
std::string Variable_Name(const std::wstring& name) {
  std::string variable;
  for (const wchar_t c : name) {
    const bool is_digit = c >= L'0' && c <= L'9';
    const bool is_letter = (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z');
    if (is_digit && variable.empty()) variable.push_back('_');
    variable.push_back(is_digit || is_letter ? static_cast<char>(c) : '_');
  }
  return variable.empty() ? "_" : variable;
}

// A name with the separators of paths and lines taken out.
std::wstring One_Name(const wchar_t* name) {
  std::wstring text = name;
  for (wchar_t& c : text) {
    if (c == L'/' || c == L'\\' || c == L'\n' || c == L'\r') c = L'_';
  }
  return text;
}

void Append_Value(std::string& text, double value) {
  if (std::isnan(value)) {
    text += "NaN\n";
  } else if (std::isinf(value)) {
    text += value > 0.0 ? "Inf\n" : "-Inf\n";
  } else {
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof(digits), value, std::chars_format::general, Digits).ptr;
    text.append(digits, end).push_back('\n');
  }
}

}  // namespace

int CMatLab_Matrix_Data::Save_Double_Vector(const double* data, int count, const wchar_t* name) {
  const std::wstring whole_name = One_Name(name);
  std::wstring drive, dir, title, extension;
  CMyExecuteProc::SplitPath(whole_name, drive, dir, title, extension);

  std::string text = "# " + To_Utf8(whole_name) + "\n# name: " + Variable_Name(title) +
                     "\n# type: matrix\n# rows: " + std::to_string(count) + "\n# columns: 1\n";
  for (int i = 0; i < count; ++i) Append_Value(text, data[i]);

  const std::filesystem::path folder = In_Working_Folder(To_Utf8(m_Sub_Folder));
  const std::filesystem::path file = folder / To_Utf8(extension.empty() ? whole_name + L".txt" : whole_name);
  std::error_code error;
  if (!folder.empty()) std::filesystem::create_directories(folder, error);
  const std::string reason = error ? error.message() : Write_Atomically(file.string(), text, Rights);
  if (reason.empty()) return 1;
  Message_Box(Format_Text("无法保存文件 %s：%s。请检查磁盘空间和文件夹的写入权限。", file.c_str(), reason.c_str()));
  return 0;
}

}  // namespace orsanta
