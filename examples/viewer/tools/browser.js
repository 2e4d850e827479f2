// A browser without a screen that shows the viewer.

import {chromium} from 'playwright-core';
import {serve} from '../serve.js';

// Serves the directory beside the viewer, calls use(page, address) and closes everything.
export async function withViewer(directory, size, use) {
  const {server, address} = await serve(directory, 0);
  const browser = await chromium.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    // Drawn by the processor: no graphics card is needed. The sandbox cannot start as root, and
    // containers have little shared memory.
    args: ['--use-angle=swiftshader', '--enable-unsafe-swiftshader', '--no-sandbox',
      '--disable-dev-shm-usage'],
  });
  try {
    await use(await browser.newPage(size), address);
  } finally {
    await browser.close();
    server.close();
    server.closeAllConnections();
  }
}

// Waits until the viewer has opened its files. Resolves to 'ready' or 'failed'.
export async function opened(page) {
  await page.waitForFunction(() => ['ready', 'failed'].includes(document.body.dataset.state), null,
    {timeout: 120000});
  return page.evaluate(() => document.body.dataset.state);
}
