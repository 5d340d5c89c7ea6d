#include "desktop/chinese_texts.h"

#include <QApplication>
#include <QTranslator>
#include <map>
#include <string_view>

namespace orsanta {

namespace {

// By the text that Qt has in its source.
const std::map<std::string_view, const char*> Texts = {
    {"Look in:", "位置："},
    {"Directory:", "文件夹："},
    {"&Directory:", "文件夹："},
    {"File &name:", "文件名："},
    {"Files of type:", "文件类型："},
    {"&Open", "打开(&O)"},
    {"&Save", "保存(&S)"},
    {"Save", "保存"},
    {"&Choose", "选择(&C)"},
    {"Cancel", "取消"},
    {"&Cancel", "取消"},
    {"&Yes", "是(&Y)"},
    {"&No", "否(&N)"},
    {"OK", "确定"},
    {"&OK", "确定"},
    {"Name", "名称"},
    {"Size", "大小"},
    {"Type", "类型"},
    {"Kind", "类型"},
    {"Date Modified", "修改时间"},
    {"Back", "后退"},
    {"Forward", "前进"},
    {"Parent Directory", "上级文件夹"},
    {"Create New Folder", "新建文件夹"},
    {"Create a New Folder", "新建文件夹"},
    {"&New Folder", "新建文件夹(&N)"},
    {"New Folder", "新建文件夹"},
    {"List View", "列表"},
    {"Change to list view mode", "改为列表"},
    {"Detail View", "详细信息"},
    {"Change to detail view mode", "改为详细信息"},
    {"Go back", "后退"},
    {"Go forward", "前进"},
    {"Go to the parent directory", "到上级文件夹"},
    {"Sidebar", "侧栏"},
    {"Computer", "计算机"},
    {"My Computer", "计算机"},
    {"Drive", "驱动器"},
    {"File", "文件"},
    {"Folder", "文件夹"},
    {"%1 File", "%1 文件"},
    {"%1 bytes", "%1 字节"},
    {"Show &hidden files", "显示隐藏文件(&H)"},
    {"&Rename", "重命名(&R)"},
    {"&Delete", "删除(&D)"},
    {"Remove", "移除"},
    {"%1 already exists.\nDo you want to replace it?", "%1 已经存在。\n要替换它吗？"},
    {"%1\nFile not found.\nPlease verify the correct file name was given.", "%1\n找不到文件，请检查文件名。"},
    {"%1\nDirectory not found.\nPlease verify the correct directory name was given.",
     "%1\n找不到文件夹，请检查文件夹名。"},
    {"'%1' is write protected.\nDo you want to delete it anyway?", "“%1”有写保护。\n仍要删除吗？"},
    {"Are you sure you want to delete '%1'?", "确定要删除“%1”吗？"},
    {"Could not delete directory.", "无法删除文件夹。"},
    {"&Undo", "撤销(&U)"},
    {"&Redo", "重做(&R)"},
    {"Cu&t", "剪切(&T)"},
    {"&Copy", "复制(&C)"},
    {"&Paste", "粘贴(&P)"},
    {"Delete", "删除"},
    {"Select All", "全选"},
};

class C_Chinese_Texts : public QTranslator {
 public:
  using QTranslator::QTranslator;
  bool isEmpty() const override { return false; }
  QString translate(const char* /*context*/, const char* source, const char* /*disambiguation*/,
                    int /*n*/) const override {
    const auto found = Texts.find(source);
    return found != Texts.end() ? QString::fromUtf8(found->second) : QString();
  }
};

}  // namespace

void Install_Chinese_Texts() {
  QApplication::installTranslator(new C_Chinese_Texts(qApp));
}

}  // namespace orsanta
