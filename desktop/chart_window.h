// The window of one chart: the drawing, and under it what can be done with it. Qt thread only.
#pragma once

#include <QWidget>
#include <functional>

#include "support/dialog/front.h"

class QLabel;

namespace orsanta {

class C_Chart_View;

class C_Chart_Window : public QWidget {
 public:
  // closed: called when the operator closes the window.
  C_Chart_Window(const C_Chart_Model& model, std::function<void()> closed);

  void Redraw(const C_Chart_Model& model);
  // Save the drawing, the points. Return an empty text, or why it failed.
  QString Save_Png(const QString& path);
  QString Save_Csv(const QString& path);

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void Note(const QString& text);
  QString Full_Title() const;
  QString File_Name() const;
  void Ask_And_Save(const QString& filter, const QString& suffix, QString (C_Chart_Window::*save)(const QString&));

  std::function<void()> m_Closed;
  C_Chart_Model m_Model;
  C_Chart_View* m_View = nullptr;
  QLabel* m_Note = nullptr;
};

}  // namespace orsanta
