// Hosts that are not there, or that go away: the editor always hears why.
'use strict';

const { describe, it } = require('node:test');
const assert = require('node:assert/strict');
const { spawn } = require('node:child_process');
const { DebugClient } = require('@vscode/debugadapter-testsupport');
const { demoTakesToken, adapter, exited, freePort, getJson, requestAndWait, sleep, startDemo, startClient, stopClient } = require('./helpers');

describe('hosts that fail', { timeout: 60000 }, () => {
  it('refuses to attach to a URL where no host listens, with a readable message', async () => {
    const client = await startClient();
    try {
      await client.initializeRequest();
      const url = `http://127.0.0.1:${await freePort()}`;
      await assert.rejects(client.attachRequest({ url }), (error) => {
        assert.match(error.message, new RegExp(`^Unable to reach the host at ${url}: `));
        return true;
      });
      await assert.rejects(client.threadsRequest(), /Not attached to a host/);
      await assert.rejects(client.attachRequest({}), /needs the host's "url"/);
    } finally {
      assert.equal(await stopClient(client), 0);
    }
  });

  it('ends the session with the reason when the host dies while attached', async () => {
    const host = await startDemo();
    const client = await startClient();
    try {
      await client.initializeRequest();
      await client.attachRequest({ url: host.url });
      const output = client.waitForEvent('output');
      const terminated = client.waitForEvent('terminated');
      host.child.kill('SIGKILL');
      const { body } = await output;
      assert.equal(body.category, 'console');
      assert.match(body.output, new RegExp(`lost the host at ${host.url}: `));
      await terminated;
      await assert.rejects(client.threadsRequest(), /Not attached to a host/);
    } finally {
      host.child.kill('SIGKILL');
      assert.equal(await stopClient(client), 0);
    }
  });

  it('resumes the host it stopped when the editor goes away without a word', async () => {
    const host = await startDemo();
    try {
      const client = await startClient();
      await client.initializeRequest();
      await client.attachRequest({ url: host.url });
      await requestAndWait(client, 'stopped', () => client.pauseRequest({ threadId: 2 }));
      const child = client._adapterProcess;
      client.stopAdapter();
      assert.equal(await exited(child), 0);
      assert.equal((await getJson(host.url, 'debug/suspend')).suspended, false);
    } finally {
      host.child.kill('SIGKILL');
    }
  });

  it('sends the token of a host that requires one', { skip: !demoTakesToken() && 'nox-demo has no --token' }, async () => {
    const token = 'e2e-token-5f1c';
    const host = await startDemo(['--token', token], { Authorization: `Bearer ${token}` });
    const client = await startClient();
    try {
      await client.initializeRequest();
      await assert.rejects(client.attachRequest({ url: host.url }), /HTTP 401/);
      await client.attachRequest({ url: host.url, token });
      assert.equal((await client.threadsRequest()).body.threads.length, 4);
    } finally {
      host.child.kill('SIGKILL');
      assert.equal(await stopClient(client), 0);
    }
  });

  it('serves clients one after another on a TCP port, and stops on SIGTERM', async () => {
    const port = await freePort();
    const server = spawn(adapter, ['--port', String(port)], { stdio: 'ignore' });
    try {
      for (let round = 0; round < 2; ++round) {
        const client = new DebugClient(adapter, '', 'nox');
        // Server mode: the client waits without timeouts, so retry the connection here.
        for (let attempt = 0; ; ++attempt) {
          try {
            await new Promise((resolve, reject) => {
              client.start(port).then(resolve, reject);
              client._socket.once('error', reject);
            });
            break;
          } catch (error) {
            if (attempt > 50) throw error;
            await sleep(50);
          }
        }
        const { body } = await client.initializeRequest();
        assert.equal(body.supportsFunctionBreakpoints, true);
        await client.stop();
      }
    } finally {
      server.kill('SIGTERM');
    }
    assert.equal(await exited(server), 0);
  });
});
