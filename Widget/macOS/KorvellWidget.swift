// The widget of macOS: an extension that reads the document which Korvell writes. It measures nothing, and is made
// anew when the application asks for it or the document gets old.

import SwiftUI
import WidgetKit

@main
struct KorvellWidget: Widget {
  var body: some WidgetConfiguration {
    StaticConfiguration(kind: "com.korvell.Korvell.Widget", provider: DocumentProvider()) { entry in
      WidgetFace(entry: entry)
        .containerBackground(for: .widget) { Palette.surface }
    }
    .configurationDisplayName("Korvell")
    .description("The health of your Mac at a glance.")
    .supportedFamilies([.systemSmall, .systemMedium, .systemLarge])
  }
}

struct DocumentEntry: TimelineEntry {
  let date: Date
  let document: WidgetDocument?

  /// Older than five minutes when it is shown; one of the future was written before the clock was set back.
  var isOld: Bool {
    guard let document else { return false }
    return abs(date.timeIntervalSince(document.date)) >= DocumentProvider.patience
  }
}

struct DocumentProvider: TimelineProvider {
  static let patience: TimeInterval = 300

  func placeholder(in context: Context) -> DocumentEntry {
    DocumentEntry(date: Date(), document: nil)
  }

  func getSnapshot(in context: Context, completion: @escaping (DocumentEntry) -> Void) {
    completion(DocumentEntry(date: Date(), document: WidgetDocument.read()))
  }

  /// What is there now, and the same again marked as old, so that a Korvell which has ended needs no reload to show.
  func getTimeline(in context: Context, completion: @escaping (Timeline<DocumentEntry>) -> Void) {
    let now = Date()
    let document = WidgetDocument.read()
    var entries = [DocumentEntry(date: now, document: document)]
    if let document {
      let old = document.date.addingTimeInterval(Self.patience)
      if old > now { entries.append(DocumentEntry(date: old, document: document)) }
    }
    completion(Timeline(entries: entries, policy: .after(now.addingTimeInterval(900))))
  }
}
