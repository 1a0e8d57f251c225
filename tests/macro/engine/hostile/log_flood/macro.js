for (let i = 0; i < 10000000; i++) console.log('x');
return {notifications: [{message: 'done'}]};
