// Small helpers for the page. Text is only ever set as text: nothing of a user's file is interpreted.

export const byId = (id) => document.getElementById(id);

/** An element with properties and children (nodes, or strings as text). */
export function make(tag, properties = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(properties)) {
    if (name in element) element[name] = value;
    else element.setAttribute(name, value);
  }
  element.append(...children);
  return element;
}

export function show(element, shown) {
  element.hidden = !shown;
}

/** "12.3 kB", decimal units. */
export function size(bytes) {
  if (bytes < 1000) return `${bytes} bytes`;
  return bytes < 1e6 ? `${(bytes / 1000).toFixed(1)} kB` : `${(bytes / 1e6).toFixed(1)} MB`;
}
