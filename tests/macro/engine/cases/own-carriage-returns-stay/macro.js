return { textEdits: [{ type: 'replaceAll', text: context.document.text.toUpperCase() }] };
