// What the diagram library calls that the web view's script engine (Chromium 102) lacks.
if (typeof Object.groupBy !== "function") {
  Object.groupBy = function groupBy(items, keyOf) {
    const groups = Object.create(null);
    let index = 0;
    for (const item of items) {
      const key = keyOf(item, index++);
      (groups[key] ??= []).push(item);
    }
    return groups;
  };
}
if (typeof Map.groupBy !== "function") {
  Map.groupBy = function groupBy(items, keyOf) {
    const groups = new Map();
    let index = 0;
    for (const item of items) {
      const key = keyOf(item, index++);
      if (!groups.has(key)) groups.set(key, []);
      groups.get(key).push(item);
    }
    return groups;
  };
}
