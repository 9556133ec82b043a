// A real nox-demo for the browser tests: started on a free loopback port, stopped and
// started again on the same port, and never left behind (killed when the tests end).

import { spawn } from 'node:child_process';
import net from 'node:net';

const START_TIMEOUT_MS = 15000;

export class Demo {
  // `binary` is the nox-demo program; `args` are given to every start.
  constructor(binary, args = []) {
    this.binary = binary;
    this.args = args;
    this.process = null;
    this.port = 0;
    this.output = '';
    process.on('exit', () => this.process?.kill('SIGKILL'));
  }

  get url() { return `http://127.0.0.1:${this.port}`; }

  // Starts on a free port (on `port` when given), and waits until the server answers.
  async start(port = 0) {
    for (let attempt = 0; attempt < 5; ++attempt) {
      this.port = port || await freePort();
      if (await this.launch()) return;
      if (port) await sleep(500);
    }
    throw new Error(`nox-demo did not start:\n${this.output}`);
  }

  async launch() {
    this.output = '';
    const child = spawn(this.binary, ['--port', String(this.port), ...this.args], { stdio: ['ignore', 'pipe', 'pipe'] });
    this.process = child;
    const exited = new Promise((resolve) => child.once('exit', () => resolve(false)));
    child.stdout.on('data', (data) => { this.output += data; });
    child.stderr.on('data', (data) => { this.output += data; });
    const answered = this.waitForApi(child);
    if (await Promise.race([answered, exited])) return true;
    child.kill('SIGKILL');
    this.process = null;
    return false;
  }

  async waitForApi(child) {
    const deadline = Date.now() + START_TIMEOUT_MS;
    while (Date.now() < deadline && child.exitCode === null) {
      try {
        // Any answer will do: a host that requires a token answers 401.
        await fetch(`${this.url}/api/debug`, { signal: AbortSignal.timeout(1000) });
        return true;
      } catch {
        // Not listening yet.
      }
      await sleep(50);
    }
    return false;
  }

  // SIGTERM, then the exit status (null when it had to be killed).
  async stop() {
    const child = this.process;
    if (!child) return 0;
    this.process = null;
    if (child.exitCode !== null) return child.exitCode;
    const exited = new Promise((resolve) => child.once('exit', (code) => resolve(code)));
    child.kill('SIGTERM');
    const timer = setTimeout(() => child.kill('SIGKILL'), 10000);
    const code = await exited;
    clearTimeout(timer);
    return code;
  }
}

function freePort() {
  return new Promise((resolve, reject) => {
    const server = net.createServer();
    server.once('error', reject);
    server.listen(0, '127.0.0.1', () => {
      const { port } = server.address();
      server.close(() => resolve(port));
    });
  });
}

export function sleep(milliseconds) {
  return new Promise((resolve) => setTimeout(resolve, milliseconds));
}
