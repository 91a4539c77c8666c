// The widget framework's two calls, for MacWidgetCenter: the framework has no interface but this language's.

import WidgetKit

@_cdecl("korvell_widget_configurations")
public func korvellWidgetConfigurations(
  _ context: UnsafeMutableRawPointer,
  _ answer: @escaping @convention(c) (UnsafeMutableRawPointer, Int64) -> Void
) {
  WidgetCenter.shared.getCurrentConfigurations { result in
    switch result {
    case .success(let widgets): answer(context, Int64(widgets.count))
    case .failure: answer(context, -1)
    }
  }
}

@_cdecl("korvell_widget_reload")
public func korvellWidgetReload() {
  WidgetCenter.shared.reloadAllTimelines()
}
