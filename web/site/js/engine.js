// The page's end of the worker: requests with answers, events, and an end at any time.

export class Engine extends EventTarget {
  #worker = null;
  #waiting = new Map();
  #next = 1;

  /** @returns the answer; rejects with an Error whose message is meant for the user */
  request(type, data = {}) {
    const worker = this.#worker ??= this.#start();
    const id = this.#next++;
    return new Promise((resolve, reject) => {
      this.#waiting.set(id, {resolve, reject});
      worker.postMessage({id, type, ...data});
    });
  }

  /** Ends whatever runs; its memory is given back, and the next request starts a new worker. */
  stop(reason) {
    this.#worker?.terminate();
    this.#worker = null;
    for (const {reject} of this.#waiting.values()) reject(new Error(reason));
    this.#waiting.clear();
  }

  #start() {
    const worker = new Worker(new URL('./worker.js', import.meta.url), {type: 'module'});
    worker.addEventListener('message', ({data}) => this.#hear(data));
    worker.addEventListener('error', (event) => {
      event.preventDefault();
      this.stop(event.message ? `The run ended unexpectedly: ${event.message}`
                              : 'A part of the page could not be loaded. Reload the page.');
    });
    return worker;
  }

  #hear(data) {
    const {resolve, reject} = this.#waiting.get(data.id) ?? {};
    this.#waiting.delete(data.id);
    if (data.type === 'answer') resolve?.(data.result);
    else if (data.type === 'fault') reject?.(new Error(data.message));
    else this.dispatchEvent(new CustomEvent(data.type, {detail: data}));
  }
}
