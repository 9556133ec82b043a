// The host's inspection API, spoken from the page's own origin. Every call carries the
// access token (when there is one) as "Authorization: Bearer", gives up after a few
// seconds, and fails with an ApiError that says what the host answered.

const TIMEOUT_MS = 4000;

export class ApiError extends Error {
  // `status` is the HTTP status, 0 when the host could not be reached.
  constructor(method, path, status, reason) {
    super(status === 0 ? `${method} ${path}: the host does not answer (${reason})`
                       : `${method} ${path}: ${status} ${reason}`);
    this.name = 'ApiError';
    this.method = method;
    this.path = path;
    this.status = status;
    this.reason = reason;
  }

  get unreachable() { return this.status === 0; }
  get unauthorized() { return this.status === 401; }
}

export class Api {
  // `getToken()` gives the token to send, or null.
  constructor(getToken) {
    this.getToken = getToken;
  }

  // `path` is below /api, such as "debug/entities".
  async request(method, path, body) {
    const headers = { Accept: 'application/json' };
    const token = this.getToken();
    if (token) headers.Authorization = `Bearer ${token}`;
    if (body !== undefined) headers['Content-Type'] = 'application/json';
    const url = `/api/${path}`;
    let response;
    try {
      response = await fetch(url, {
        method,
        headers,
        body: body === undefined ? undefined : JSON.stringify(body),
        cache: 'no-store',
        credentials: 'omit',
        signal: AbortSignal.timeout(TIMEOUT_MS),
      });
    } catch (error) {
      throw new ApiError(method, url, 0, error.name === 'TimeoutError' ? 'timed out' : 'no connection');
    }
    const text = await response.text().catch(() => '');
    if (!response.ok) throw new ApiError(method, url, response.status, response.statusText || 'refused');
    // 204 answers a POST or DELETE of something the host does not know.
    if (response.status === 204 || text === '') return { status: response.status, value: null };
    try {
      return { status: response.status, value: JSON.parse(text) };
    } catch {
      throw new ApiError(method, url, response.status, 'the reply is not JSON');
    }
  }

  async get(path) { return (await this.request('GET', path)).value; }

  // ---- Reading.

  readExecution() { return this.get('debug/suspend'); }
  readEngines() { return this.get('engines'); }
  async readEntities() { return (await this.get('debug/entities')).map((entity) => entity.index); }
  readContexts(entity) { return this.get(`debug/entities/${entity}/contexts`); }
  readContext(entity, index) { return this.get(`debug/entities/${entity}/contexts/${index}`); }
  readEventIds() { return this.get('events'); }
  readEvent(id) { return this.get(`events/${id}`); }
  // Any resource, such as "sim/agents/2"; the whole reply, status included.
  readResource(path) { return this.request('GET', path); }

  // ---- Acting. Each resolves when the host accepted, and throws its refusal.

  switchEngine(path, enabled) { return this.request('POST', 'engines', { [path]: enabled }); }
  // `entity` null suspends whichever entity steps next.
  suspend(entity) { return this.request('POST', 'debug/suspend', entity === null ? {} : { entity }); }
  resume() { return this.request('POST', 'debug/resume'); }
  stepIn() { return this.request('POST', 'debug/stepin'); }
  stepOver() { return this.request('POST', 'debug/stepover'); }
  stepOut() { return this.request('POST', 'debug/stepout'); }

  // A breakpoint is a subscription to breakpoint events with a location filter and,
  // when `hitCount` is given, a hit-count filter. Resolves to its request id.
  async addBreakpoint(location, hitCount) {
    const filters = { location };
    if (hitCount) filters.hitcount = hitCount;
    const reply = await this.request('POST', 'events/subscriptions', { type: 'breakpoint', filters });
    return reply.value.requestId;
  }

  // Resolves to false when the host no longer had it (a restarted host, say).
  async removeBreakpoint(requestId) {
    return (await this.request('DELETE', `events/subscriptions/${requestId}`)).status === 200;
  }

  clearEvents() { return this.request('DELETE', 'events/'); }
}
