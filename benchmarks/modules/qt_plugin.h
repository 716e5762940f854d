// The interface of the Qt plug-in, shared by the plug-in and the benchmarks.

#pragma once

#include <QObject>
#include <QtPlugin>

#include "modules/widget.h"

class WidgetFactory {
 public:
  virtual ~WidgetFactory() = default;
  virtual Widget* Create() = 0;
};

#define WIDGET_FACTORY_ID "benchmark.WidgetFactory"
Q_DECLARE_INTERFACE(WidgetFactory, WIDGET_FACTORY_ID)
