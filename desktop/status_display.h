// The text of a station in its column: light on a dark ground, as large as its space allows. Qt thread only.
#pragma once

#include <QWidget>

namespace orsanta {

class C_Status_Display : public QWidget {
 public:
  // rows: height in rows. scale: size of the text against the normal one.
  C_Status_Display(const QString& caption, int rows, double scale);
  static int Height(int rows, double scale);  // the least, pixels

  void Set_Text(const QString& text);  // lines are parted by line feeds
  QString Text() const { return m_Text; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  QRect Text_Area() const;
  void Fit();

  QString m_Caption;
  QString m_Text;
  QStringList m_Lines;
  int m_Largest_Text;   // pixels
  int m_Text_Size = 0;  // pixels, as fitted
};

}  // namespace orsanta
