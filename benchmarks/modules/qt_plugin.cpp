// The Qt plug-in: its instance is a factory for widgets.

#include "modules/qt_plugin.h"

class QtWidget final : public Widget {
 public:
  uint64_t Value() const override { return value_; }

 private:
  uint64_t value_ = 0;
};

class QtPlugin final : public QObject, public WidgetFactory {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID WIDGET_FACTORY_ID)
  Q_INTERFACES(WidgetFactory)

 public:
  Widget* Create() override { return new QtWidget; }
};

#include "qt_plugin.moc"
