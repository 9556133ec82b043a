// What the user does, sent to the host. Each refusal is shown in the message line with
// the host's status and reason; a refused token asks for another. After each action
// the page refreshes as soon as the pace allows.

const COMMANDS = {
  suspend: { label: 'Suspend', run: (api, state) => api.suspend(state.selectedEntity),
    refusal: 'the host is already suspended, or the selected entity is no longer registered' },
  resume: { label: 'Resume', run: (api) => api.resume(), refusal: 'the host is not suspended' },
  stepIn: { label: 'Step in', run: (api) => api.stepIn(), refusal: 'the host is not suspended' },
  stepOver: { label: 'Step over', run: (api) => api.stepOver(), refusal: 'the host is not suspended' },
  stepOut: { label: 'Step out', run: (api) => api.stepOut(), refusal: 'the host is not suspended' },
};

export class Actions {
  // `askToken(reason)` asks the user for an access token.
  constructor(api, store, poller, askToken) {
    this.api = api;
    this.store = store;
    this.poller = poller;
    this.askToken = askToken;
  }

  // ---- Messages.

  tell(text, kind = 'info') { this.store.update({ message: { text, kind } }); }
  clearMessage() { this.store.update({ message: null }); }

  // Shows why `what` failed; `hint` explains a 400 in the user's terms.
  refused(what, error, hint) {
    if (error.unauthorized) this.askToken('The host refused the access token.');
    if (error.unreachable) {
      this.tell(`${what} failed: the host does not answer.`, 'error');
    } else if (error.status !== undefined) {
      const why = error.status === 400 && hint ? ` (${hint})` : '';
      this.tell(`${what} refused by the host: ${error.status} ${error.reason}${why}.`, 'error');
    } else {
      this.tell(`${what} failed: ${error.message}`, 'error');
    }
  }

  async attempt(what, action, hint) {
    try {
      const result = await action();
      this.clearMessage();
      return result;
    } catch (error) {
      this.refused(what, error, hint);
      return undefined;
    } finally {
      this.poller.refreshSoon();
    }
  }

  // ---- Execution.

  // `name` is one of suspend, resume, stepIn, stepOver, stepOut.
  async command(name) {
    const command = COMMANDS[name];
    const done = await this.attempt(command.label, () => command.run(this.api, this.store.get()).then(() => true),
      command.refusal);
    // The engine runs on until it stops again, which the next refresh will show.
    if (done && name !== 'suspend') this.store.update({ suspended: false, suspendedEntity: null });
  }

  // ---- Selection.

  selectEntity(entity) {
    if (this.store.get().selectedEntity === entity) return;
    this.store.update({ selectedEntity: entity, contexts: [], selectedContext: null, details: null });
    this.poller.refreshSoon();
  }

  selectContext(index) {
    if (this.store.get().selectedContext === index) return;
    this.store.update({ selectedContext: index, details: null });
    this.poller.refreshSoon();
  }

  // ---- Engines.

  async switchEngine(path, enabled) {
    const done = await this.attempt(`Switching the engine ${path}`, () => this.api.switchEngine(path, enabled));
    if (done) this.markEngine(path, enabled);
  }

  markEngine(path, enabled) {
    const engines = this.store.get().engines.map((engine) => (engine.path === path ? { path, enabled } : engine));
    this.store.update({ engines });
  }

  // ---- Breakpoints and events.

  // Resolves to whether the breakpoint was set. Breakpoint events are only queued
  // while the "events" engine is on: adding a breakpoint turns it on.
  async addBreakpoint(location, hitCount) {
    const requestId = await this.attempt('Adding the breakpoint', async () => {
      if (this.store.get().engines.some((engine) => engine.path === 'events' && !engine.enabled)) {
        await this.api.switchEngine('events', true);
        this.markEngine('events', true);
      }
      return this.api.addBreakpoint(location, hitCount);
    }, 'the location is not a valid URI, or the host takes no more subscriptions');
    if (requestId === undefined) return false;
    const breakpoint = { requestId, location, hitCount: hitCount ?? null };
    this.store.update({ breakpoints: [...this.store.get().breakpoints, breakpoint] });
    return true;
  }

  async removeBreakpoint(requestId) {
    const known = await this.attempt('Removing the breakpoint', () => this.api.removeBreakpoint(requestId));
    if (known === undefined) return;
    this.store.update({ breakpoints: this.store.get().breakpoints.filter((b) => b.requestId !== requestId) });
    if (!known) this.tell(`Breakpoint ${requestId} was already gone from the host (restarted?).`);
  }

  async clearEvents() {
    const done = await this.attempt('Clearing the events', () => this.api.clearEvents().then(() => true));
    if (done) this.store.update({ events: [] });
  }
}
