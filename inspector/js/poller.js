// Runs one refresh of the page at a time: twice a second, four times when asked to
// (after a command), and slower while the host does not answer: each failed refresh
// doubles the pause before the next one, up to a few seconds, and the first refresh
// that works brings the normal pace back. A refresh never starts while the last one
// still waits for the host, and two never start less than FASTEST_MS apart.

export const FASTEST_MS = 250;
export const NORMAL_MS = 500;
export const SLOWEST_MS = 4000;

// The time from the start of a refresh to the start of the next one, after `failures`
// refreshes failed in a row.
export function pauseAfter(failures) {
  return Math.min(SLOWEST_MS, NORMAL_MS * 2 ** failures);
}

export class Poller {
  // `refresh()` returns a promise; a rejection counts as a failure. `onFailure(error,
  // failures)` hears of each one.
  constructor(refresh, onFailure) {
    this.refresh = refresh;
    this.onFailure = onFailure;
    this.failures = 0;
    this.running = false;
    this.timer = null;
    this.lastStart = 0;
    this.wake = null;
  }

  start() {
    if (this.running) return;
    this.running = true;
    this.loop();
  }

  stop() {
    this.running = false;
    this.wakeUp();
  }

  // Asks for a refresh as soon as the pace allows, say after a command: the pause in
  // progress is cut short, not the refresh in progress.
  refreshSoon() {
    this.soon = true;
    if (this.wake) this.pause(Math.max(0, this.lastStart + FASTEST_MS - performance.now()));
  }

  async loop() {
    while (this.running) {
      this.soon = false;
      this.lastStart = performance.now();
      try {
        await this.refresh();
        this.failures = 0;
      } catch (error) {
        this.failures += 1;
        this.onFailure(error, this.failures);
      }
      if (!this.running) break;
      const pause = this.soon && this.failures === 0 ? FASTEST_MS : pauseAfter(this.failures);
      await new Promise((resolve) => {
        this.wake = resolve;
        this.pause(Math.max(0, this.lastStart + pause - performance.now()));
      });
      this.wake = null;
    }
  }

  pause(milliseconds) {
    clearTimeout(this.timer);
    this.timer = setTimeout(() => this.wakeUp(), milliseconds);
  }

  wakeUp() {
    clearTimeout(this.timer);
    const wake = this.wake;
    this.wake = null;
    if (wake) wake();
  }
}
